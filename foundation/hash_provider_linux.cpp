// Linux digest provider over OpenSSL libcrypto (EVP). Only Linux-specific code goes in this file.
#include <openssl/evp.h>

#include <cstring>
#include <new>

#include "foundation/hash_provider.h"

namespace DE::detail {

// The EVP context stands for the hash object; the digest kind for the provider context. The
// finished value is kept because EVP can finalise only once while CryptoAPI answers every time.
struct HashHandles {
  const EVP_MD* digest = nullptr;
  EVP_MD_CTX* context = nullptr;
  bool finished = false;
  unsigned int valueLength = 0;
  unsigned char value[EVP_MAX_MD_SIZE] = {};
};

namespace {

// The algorithms the Windows providers used here (RSA full, RSA with AES) offer as well.
const EVP_MD* DigestFor(std::uint32_t algorithm) {
  switch (algorithm) {
    case kAlgorithmMd5:
      return EVP_md5();
    case kAlgorithmSha1:
      return EVP_sha1();
    case kAlgorithmSha256:
      return EVP_sha256();
    default:
      return nullptr;
  }
}

}  // namespace

HashHandles* OpenHash(std::uint32_t algorithm) {
  const EVP_MD* digest = DigestFor(algorithm);
  if (digest == nullptr) return nullptr;
  HashHandles* handles = new (std::nothrow) HashHandles;
  if (handles == nullptr) return nullptr;
  handles->digest = digest;
  handles->context = EVP_MD_CTX_new();
  if (handles->context == nullptr || EVP_DigestInit_ex(handles->context, digest, nullptr) != 1) {
    CloseHash(handles);
    return nullptr;
  }
  return handles;
}

void HashData(HashHandles* handles, const void* data, std::uint32_t len) {
  if (handles->finished) return;
  EVP_DigestUpdate(handles->context, data, len);
}

void ReadHashValue(HashHandles* handles, unsigned char* out, std::uint32_t len) {
  if (!handles->finished) {
    handles->finished = true;
    if (EVP_DigestFinal_ex(handles->context, handles->value, &handles->valueLength) != 1) {
      handles->valueLength = 0;
    }
  }
  if (handles->valueLength == 0 || handles->valueLength > len) return;
  std::memcpy(out, handles->value, handles->valueLength);
}

void CloseHash(HashHandles* handles) {
  if (handles == nullptr) return;
  EVP_MD_CTX_free(handles->context);
  delete handles;
}

}  // namespace DE::detail
