// Windows digest provider over CryptoAPI (advapi32). Only Windows-specific code goes in this file.
#include "UtilPlatform.h"

#include <wincrypt.h>

#include <new>

#include "foundation/hash_provider.h"

namespace DE::detail {

struct HashHandles {
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
};

namespace {

// SHA-256 needs the RSA-with-AES provider; the plain RSA full provider serves the older digests.
DWORD ProviderTypeFor(std::uint32_t algorithm) {
  return algorithm == kAlgorithmSha256 ? PROV_RSA_AES : PROV_RSA_FULL;
}

}  // namespace

HashHandles* OpenHash(std::uint32_t algorithm) {
  HashHandles* handles = new (std::nothrow) HashHandles;
  if (handles == nullptr) return nullptr;
  if (!CryptAcquireContextW(&handles->provider, nullptr, nullptr, ProviderTypeFor(algorithm),
                            CRYPT_VERIFYCONTEXT)) {
    delete handles;
    return nullptr;
  }
  if (!CryptCreateHash(handles->provider, algorithm, 0, 0, &handles->hash)) {
    CryptReleaseContext(handles->provider, 0);
    delete handles;
    return nullptr;
  }
  return handles;
}

void HashData(HashHandles* handles, const void* data, std::uint32_t len) {
  CryptHashData(handles->hash, static_cast<const BYTE*>(data), len, 0);
}

void ReadHashValue(HashHandles* handles, unsigned char* out, std::uint32_t len) {
  DWORD size = len;
  CryptGetHashParam(handles->hash, HP_HASHVAL, out, &size, 0);
}

void CloseHash(HashHandles* handles) {
  if (handles == nullptr) return;
  CryptDestroyHash(handles->hash);
  CryptReleaseContext(handles->provider, 0);
  delete handles;
}

}  // namespace DE::detail
