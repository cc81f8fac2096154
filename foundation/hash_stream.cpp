// Digests of streams and files: the 8192-byte block reading and the stream and file one-call forms.
#include <utility>

#include "DEHash.h"
#include "DEStream.h"
#include "DEString.h"
#include "foundation/hash_internal.h"

namespace DE {

namespace {

constexpr unsigned int kBlockSize = 8192;

}  // namespace

void CryptBase::Update(Stream& s, long long count) {
  if (count < 0) return;
  // One buffer for the whole stream keeps memory constant for any size. What Read delivered is
  // deliberately not checked: a short read hashes the buffer's earlier contents.
  unsigned char block[kBlockSize] = {};
  for (long long full = count / kBlockSize; full > 0; --full) {
    s.Read(block, kBlockSize);
    Update(block, kBlockSize);
  }
  const unsigned int rest = static_cast<unsigned int>(count % kBlockSize);
  if (rest != 0) {
    s.Read(block, rest);
    Update(block, rest);
  }
}

namespace {

std::string StreamDigest(CryptBase&& crypt, Stream& s, long long count) {
  if (count < 0) return std::string(crypt.DigestLen(), '\0');
  crypt.Init();
  crypt.Update(s, count);
  return detail::FinishDigest(crypt);
}

template <typename Path>
std::string FileDigest(CryptBase&& crypt, const Path& path) {
  FileStream file(path, 0);  // read, no sharing: a file someone is writing is refused
  if (!file.IsOpened()) return std::string();
  const long long size = file.Size();
  file.Seek(0, Begin);
  return StreamDigest(std::move(crypt), file, size);
}

}  // namespace

std::string GetStreamSha1(Stream& s, long long count) { return StreamDigest(CryptSHA1(), s, count); }
std::string GetStreamSha256(Stream& s, long long count) { return StreamDigest(CryptSHA256(), s, count); }
std::string GetStreamSha1Hex(Stream& s, long long count) { return BytesToHexString(GetStreamSha1(s, count)); }
std::string GetStreamSha256Hex(Stream& s, long long count) {
  return BytesToHexString(GetStreamSha256(s, count));
}

std::string GetFileSha1(const std::string& path) { return FileDigest(CryptSHA1(), path); }
std::string GetFileSha1(const std::wstring& path) { return FileDigest(CryptSHA1(), path); }
std::string GetFileSha256(const std::string& path) { return FileDigest(CryptSHA256(), path); }
std::string GetFileSha256(const std::wstring& path) { return FileDigest(CryptSHA256(), path); }
std::string GetFileSha1Hex(const std::string& path) { return BytesToHexString(GetFileSha1(path)); }
std::string GetFileSha1Hex(const std::wstring& path) { return BytesToHexString(GetFileSha1(path)); }
std::string GetFileSha256Hex(const std::string& path) { return BytesToHexString(GetFileSha256(path)); }
std::string GetFileSha256Hex(const std::wstring& path) { return BytesToHexString(GetFileSha256(path)); }

}  // namespace DE
