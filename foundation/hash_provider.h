// The platform's digest provider as the hashing logic sees it: open, feed, read, close. Windows
// binds it to CryptoAPI (hash_provider_win.cpp), Linux to OpenSSL's EVP (hash_provider_linux.cpp).
#pragma once

#include <cstdint>

namespace DE::detail {

// CryptoAPI algorithm ids, used as the algorithm's name on both platforms.
constexpr std::uint32_t kAlgorithmMd5 = 0x8003;
constexpr std::uint32_t kAlgorithmSha1 = 0x8004;
constexpr std::uint32_t kAlgorithmSha256 = 0x800C;

struct HashHandles;

// A provider context with a fresh hash object for `algorithm`; null when either cannot be had
// (nothing stays open then). Never throws.
HashHandles* OpenHash(std::uint32_t algorithm);
// Adds bytes to the digest. Ignored once the value has been read, as CryptHashData refuses then.
void HashData(HashHandles* handles, const void* data, std::uint32_t len);
// Finishes the digest and copies it to `out` when it fits in `len` bytes (out is untouched
// otherwise). Reading again gives the same value.
void ReadHashValue(HashHandles* handles, unsigned char* out, std::uint32_t len);
// Destroys the hash object and releases the context; null is allowed.
void CloseHash(HashHandles* handles);

}  // namespace DE::detail
