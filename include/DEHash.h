// SHA-1 and SHA-256 digests of buffers, strings, streams and files, computed by the platform's
// cryptographic provider (CryptoAPI on Windows, OpenSSL libcrypto on Linux).
//
// Raw results are the digest bytes (20 for SHA-1, 32 for SHA-256); the ...Hex forms give the
// upper-case hex text of them (40 or 64 characters). Nothing here throws or reports an error:
// a provider that cannot start gives a zero-filled digest of full length, an unopenable file "".
#pragma once

#include <string>

#include "UtilExport.h"

namespace DE {

class Stream;

namespace detail {
struct HashHandles;  // the provider context and the hash object of one computation
}

// One digest computation. Not copyable (it owns provider handles); not for use by two threads.
class UTIL_API CryptBase {
 public:
  // `algorithm` is a CryptoAPI algorithm id (32772 SHA-1, 32780 SHA-256; 32771 MD5 also works on
  // both platforms); `digestLength` is the size of the value Final writes, in bytes.
  CryptBase(unsigned long algorithm, unsigned long digestLength);
  virtual ~CryptBase();
  CryptBase(const CryptBase&) = delete;
  CryptBase& operator=(const CryptBase&) = delete;

  // Opens the provider and a hash object; does nothing when already open. When the provider
  // cannot be opened the object stays closed and Update/Final do nothing.
  void Init();
  // Adds `len` bytes (the count is taken modulo 2^32); nothing for a null pointer, a negative
  // length or a closed object.
  void Update(const void* data, long long len);
  void Update(const std::string& bytes);
  // Adds `count` bytes read from the stream's current position in 8192-byte blocks. What the
  // stream actually delivered is not checked: a short stream contributes the block buffer's
  // earlier contents (zeros, or the previous block). Nothing for a negative count.
  void Update(Stream& s, long long count);
  // Writes the digest to `out`, which must hold DigestLen() bytes; nothing for a null `out` or a
  // closed object. The computation is finished afterwards: further Updates are ignored and
  // Final gives the same value again.
  void Final(unsigned char* out);
  // Closes the hash object and the provider; a later Init starts a new computation.
  void Reset();
  unsigned long DigestLen() const;

 private:
  detail::HashHandles* state_;
  unsigned int algorithm_;
  unsigned int digestLength_;
};

class UTIL_API CryptSHA1 : public CryptBase {
 public:
  CryptSHA1();
};

class UTIL_API CryptSHA256 : public CryptBase {
 public:
  CryptSHA256();
};

// Buffers and strings: "" for a null or empty input (not the digest of no data).
UTIL_API std::string GetBufferSha1(const void* const data, unsigned long len);
UTIL_API std::string GetBufferSha256(const void* const data, unsigned long len);
UTIL_API std::string GetBufferSha1Hex(const void* const data, unsigned long len);
UTIL_API std::string GetBufferSha256Hex(const void* const data, unsigned long len);
UTIL_API std::string GetStringSha1(const std::string& bytes);
UTIL_API std::string GetStringSha256(const std::string& bytes);
UTIL_API std::string GetStringSha1Hex(const std::string& bytes);
UTIL_API std::string GetStringSha256Hex(const std::string& bytes);

// `count` bytes from the stream's current position, read as CryptBase::Update(Stream&) does.
// A count of 0 gives the digest of no data; a negative count a zero-filled digest.
UTIL_API std::string GetStreamSha1(Stream& s, long long count);
UTIL_API std::string GetStreamSha256(Stream& s, long long count);
UTIL_API std::string GetStreamSha1Hex(Stream& s, long long count);
UTIL_API std::string GetStreamSha256Hex(Stream& s, long long count);

// The whole file, opened for reading with no sharing (narrow paths in the ANSI code page);
// "" when it cannot be opened, for instance while another process has it open for writing.
UTIL_API std::string GetFileSha1(const std::string& path);
UTIL_API std::string GetFileSha1(const std::wstring& path);
UTIL_API std::string GetFileSha256(const std::string& path);
UTIL_API std::string GetFileSha256(const std::wstring& path);
UTIL_API std::string GetFileSha1Hex(const std::string& path);
UTIL_API std::string GetFileSha1Hex(const std::wstring& path);
UTIL_API std::string GetFileSha256Hex(const std::string& path);
UTIL_API std::string GetFileSha256Hex(const std::wstring& path);

}  // namespace DE
