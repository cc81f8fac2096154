// The digest class family and the buffer and string one-call digests, over the platform provider.
#include "DEHash.h"

#include "DEString.h"
#include "foundation/hash_internal.h"
#include "foundation/hash_provider.h"

namespace DE {

CryptBase::CryptBase(unsigned long algorithm, unsigned long digestLength)
    : state_(nullptr),
      algorithm_(static_cast<unsigned int>(algorithm)),
      digestLength_(static_cast<unsigned int>(digestLength)) {}

CryptBase::~CryptBase() { Reset(); }

void CryptBase::Init() {
  if (state_ != nullptr) return;
  state_ = detail::OpenHash(algorithm_);
}

void CryptBase::Update(const void* data, long long len) {
  if (data == nullptr || state_ == nullptr || len < 0) return;
  // The provider takes a 32-bit count, so longer lengths wrap as they do on Windows.
  detail::HashData(state_, data, static_cast<std::uint32_t>(len));
}

void CryptBase::Update(const std::string& bytes) {
  Update(bytes.data(), static_cast<long long>(bytes.size()));
}

void CryptBase::Final(unsigned char* out) {
  if (out == nullptr || state_ == nullptr) return;
  detail::ReadHashValue(state_, out, digestLength_);
}

void CryptBase::Reset() {
  detail::CloseHash(state_);
  state_ = nullptr;
}

unsigned long CryptBase::DigestLen() const { return digestLength_; }

CryptSHA1::CryptSHA1() : CryptBase(detail::kAlgorithmSha1, 20) {}

CryptSHA256::CryptSHA256() : CryptBase(detail::kAlgorithmSha256, 32) {}

namespace detail {

std::string FinishDigest(CryptBase& crypt) {
  // Zero-filled first, so a provider that could not start leaves a digest of zeros.
  std::string digest(crypt.DigestLen(), '\0');
  crypt.Final(reinterpret_cast<unsigned char*>(&digest[0]));
  return digest;
}

}  // namespace detail

namespace {

std::string BufferDigest(CryptBase&& crypt, const void* data, unsigned long len) {
  if (data == nullptr || len == 0) return std::string();
  crypt.Init();
  crypt.Update(data, static_cast<long long>(len));
  return detail::FinishDigest(crypt);
}

}  // namespace

std::string GetBufferSha1(const void* const data, unsigned long len) {
  return BufferDigest(CryptSHA1(), data, len);
}

std::string GetBufferSha256(const void* const data, unsigned long len) {
  return BufferDigest(CryptSHA256(), data, len);
}

std::string GetBufferSha1Hex(const void* const data, unsigned long len) {
  return BytesToHexString(GetBufferSha1(data, len));
}

std::string GetBufferSha256Hex(const void* const data, unsigned long len) {
  return BytesToHexString(GetBufferSha256(data, len));
}

std::string GetStringSha1(const std::string& bytes) {
  return GetBufferSha1(bytes.data(), static_cast<unsigned long>(bytes.size()));
}

std::string GetStringSha256(const std::string& bytes) {
  return GetBufferSha256(bytes.data(), static_cast<unsigned long>(bytes.size()));
}

std::string GetStringSha1Hex(const std::string& bytes) { return BytesToHexString(GetStringSha1(bytes)); }

std::string GetStringSha256Hex(const std::string& bytes) { return BytesToHexString(GetStringSha256(bytes)); }

}  // namespace DE
