#include "foundation/record_input.h"

#include <algorithm>
#include <climits>
#include <vector>

#include "foundation/utf16.h"

namespace DE::detail {
namespace {

// A string of unknown length is read in steps of this size, so a hostile count cannot make the
// reader allocate more than the stream really delivers (plus one step).
constexpr std::size_t kStep = 64 * 1024;

std::uint32_t BigEndian32(const unsigned char* b) {
  return static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
         static_cast<std::uint32_t>(b[2]) << 8 | static_cast<std::uint32_t>(b[3]);
}

}  // namespace

RecordInput::RecordInput(Stream& stream) : stream_(stream), remaining_(-1) {
  const long long position = stream.Position();
  if (position < 0) return;
  const long long size = stream.Size();
  if (size >= 0) remaining_ = size > position ? size - position : 0;
}

std::size_t RecordInput::Fill(char* out, std::size_t n) {
  std::size_t done = 0;
  while (done < n) {
    const unsigned int chunk = static_cast<unsigned int>(std::min<std::size_t>(n - done, UINT_MAX));
    const unsigned int got = stream_.Read(out + done, chunk);
    if (got == 0) break;
    done += std::min<std::size_t>(got, chunk);
  }
  if (done < n) short_ = true;
  if (remaining_ >= 0) remaining_ = remaining_ > static_cast<long long>(done) ? remaining_ - done : 0;
  return done;
}

std::uint32_t RecordInput::UInt32() {
  unsigned char bytes[4] = {};
  Fill(reinterpret_cast<char*>(bytes), sizeof bytes);
  return BigEndian32(bytes);
}

std::uint64_t RecordInput::UInt64() {
  unsigned char bytes[8] = {};
  Fill(reinterpret_cast<char*>(bytes), sizeof bytes);
  return static_cast<std::uint64_t>(BigEndian32(bytes)) << 32 | BigEndian32(bytes + 4);
}

std::size_t RecordInput::Limit(std::uint32_t wanted) const {
  if (remaining_ < 0 || remaining_ >= static_cast<long long>(wanted)) return wanted;
  return static_cast<std::size_t>(remaining_);
}

std::size_t RecordInput::ReserveHint(std::uint32_t count, unsigned minBytes) const {
  const std::size_t known = remaining_ < 0 ? 1024 : static_cast<std::size_t>(remaining_ / minBytes);
  return std::min<std::size_t>(count, known);
}

std::string RecordInput::Bytes(std::size_t n) {
  if (remaining_ >= 0 || n <= kStep) {
    std::string bytes(n, '\0');
    if (n > 0) Fill(&bytes[0], n);
    return bytes;
  }
  std::string bytes;
  while (bytes.size() < n) {
    const std::size_t start = bytes.size();
    const std::size_t step = std::min(kStep, n - start);
    bytes.resize(start + step);
    const std::size_t got = Fill(&bytes[start], step);
    if (got < step) {
      bytes.resize(start + got);
      break;
    }
  }
  return bytes;
}

std::string RecordInput::String() {
  const auto count = static_cast<std::int32_t>(UInt32());
  if (count < 1) return std::string();
  const std::size_t n = Limit(static_cast<std::uint32_t>(count));
  if (n < static_cast<std::size_t>(count)) short_ = true;  // the record ends inside this string
  return Bytes(n);
}

std::wstring RecordInput::WString() {
  const auto count = static_cast<std::int32_t>(UInt32());
  if (count < 1 || count % 2 != 0) return std::wstring();
  const std::size_t n = Limit(static_cast<std::uint32_t>(count));
  if (n < static_cast<std::size_t>(count)) short_ = true;
  std::string bytes = Bytes(n);
  if (bytes.size() % 2 != 0) bytes.push_back('\0');  // half a unit arrived: its low byte is 0
  std::vector<std::uint16_t> units(bytes.size() / 2);
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[2 * i]) << 8 |
                                          static_cast<unsigned char>(bytes[2 * i + 1]));
  }
  return FromUtf16(units.data(), units.size());
}

}  // namespace DE::detail
