// StreamWriter: the record format's encodings put on a stream.
#include <cstdint>
#include <cstdio>

#include "DESerialize.h"
#include "foundation/utf16.h"

namespace DE {
namespace {

// Strings of this many UTF-16 units or more are skipped whole: their byte count would not fit
// the 32-bit prefix's positive range.
constexpr std::size_t kMaxWideUnits = 0x40000000;

void PutBigEndian32(unsigned char* out, std::uint32_t value) {
  out[0] = static_cast<unsigned char>(value >> 24);
  out[1] = static_cast<unsigned char>(value >> 16);
  out[2] = static_cast<unsigned char>(value >> 8);
  out[3] = static_cast<unsigned char>(value);
}

void Put32(Stream& stream, std::uint32_t value) {
  unsigned char bytes[4];
  PutBigEndian32(bytes, value);
  stream.Write(bytes, sizeof bytes);
}

void Put64(Stream& stream, std::uint64_t value) {
  unsigned char bytes[8];
  PutBigEndian32(bytes, static_cast<std::uint32_t>(value >> 32));
  PutBigEndian32(bytes + 4, static_cast<std::uint32_t>(value));
  stream.Write(bytes, sizeof bytes);
}

void PutString(Stream& stream, const std::string& value) {
  // Lengths beyond 4 GiB keep their low 32 bits, in the count and in the bytes written.
  const auto count = static_cast<std::uint32_t>(value.size());
  Put32(stream, count);
  if (count > 0) stream.Write(value.data(), count);
}

void PutWString(Stream& stream, const std::wstring& value) {
  const std::vector<std::uint16_t> units = detail::ToUtf16(value);
  if (units.size() >= kMaxWideUnits) return;
  std::vector<unsigned char> bytes(4 + 2 * units.size());
  PutBigEndian32(bytes.data(), static_cast<std::uint32_t>(2 * units.size()));
  for (std::size_t i = 0; i < units.size(); ++i) {
    bytes[4 + 2 * i] = static_cast<unsigned char>(units[i] >> 8);
    bytes[5 + 2 * i] = static_cast<unsigned char>(units[i]);
  }
  stream.Write(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

template <typename Int>
void PutIntVector(Stream& stream, const std::vector<Int>& values) {
  Put32(stream, static_cast<std::uint32_t>(values.size()));
  for (const Int value : values) Put32(stream, static_cast<std::uint32_t>(value));
}

}  // namespace

StreamWriter::StreamWriter(Stream& stream) : stream_(stream) {}

StreamWriter::~StreamWriter() = default;

void StreamWriter::WriteInt32(const int& value) { Put32(stream_, static_cast<std::uint32_t>(value)); }

void StreamWriter::WriteUInt32(const unsigned int& value) { Put32(stream_, value); }

void StreamWriter::WriteInt64(const long long& value) { Put64(stream_, static_cast<std::uint64_t>(value)); }

void StreamWriter::WriteUInt64(const unsigned long long& value) { Put64(stream_, value); }

void StreamWriter::WriteFloat(const float& value) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
  if (length >= 0 && static_cast<std::size_t>(length) < sizeof text) {
    PutString(stream_, std::string(text, static_cast<std::size_t>(length)));
  }
}

void StreamWriter::WriteString(const std::string& value) { PutString(stream_, value); }

void StreamWriter::WriteWString(const std::wstring& value) { PutWString(stream_, value); }

void StreamWriter::WriteIntVector(const std::vector<int>& values) { PutIntVector(stream_, values); }

void StreamWriter::WriteIntVector(const std::vector<unsigned int>& values) { PutIntVector(stream_, values); }

void StreamWriter::WriteStringVector(const std::vector<std::string>& values) {
  Put32(stream_, static_cast<std::uint32_t>(values.size()));
  for (const std::string& value : values) PutString(stream_, value);
}

void StreamWriter::WriteStringVector(const std::vector<std::wstring>& values) {
  Put32(stream_, static_cast<std::uint32_t>(values.size()));
  for (const std::wstring& value : values) PutWString(stream_, value);
}

void StreamWriter::WriteStringMap(const std::map<std::string, std::string>& values) {
  Put32(stream_, static_cast<std::uint32_t>(values.size()));
  for (const auto& entry : values) {
    PutString(stream_, entry.first);
    PutString(stream_, entry.second);
  }
}

void StreamWriter::WriteStringMap(const std::map<std::wstring, std::wstring>& values) {
  Put32(stream_, static_cast<std::uint32_t>(values.size()));
  for (const auto& entry : values) {
    PutWString(stream_, entry.first);
    PutWString(stream_, entry.second);
  }
}

void StreamWriter::WriteFileTime(const FILETIME& value) {
  Put32(stream_, value.dwLowDateTime);
  Put32(stream_, value.dwHighDateTime);
}

}  // namespace DE
