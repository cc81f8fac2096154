// StreamReader: the record format read back, bounded against hostile counts (record_input.h).
#include <string>

#include "DESerialize.h"
#include "foundation/record_input.h"

namespace DE {
namespace {

template <typename Int>
void ReadInts(Stream& stream, std::vector<Int>& values) {
  detail::RecordInput in(stream);
  const std::uint32_t count = in.UInt32();
  values.reserve(values.size() + in.ReserveHint(count, 4));
  for (std::uint32_t i = 0; i < count && !in.Exhausted(); ++i)
    values.push_back(static_cast<Int>(in.UInt32()));
}

template <typename Text, typename ReadOne>
void ReadTexts(Stream& stream, std::vector<Text>& values, ReadOne readOne) {
  detail::RecordInput in(stream);
  const std::uint32_t count = in.UInt32();
  values.reserve(values.size() + in.ReserveHint(count, 4));
  for (std::uint32_t i = 0; i < count && !in.Exhausted(); ++i) values.push_back(readOne(in));
}

template <typename Text, typename ReadOne>
void ReadMap(Stream& stream, std::map<Text, Text>& values, ReadOne readOne) {
  detail::RecordInput in(stream);
  const std::uint32_t count = in.UInt32();
  for (std::uint32_t i = 0; i < count && !in.Exhausted(); ++i) {
    Text key = readOne(in);
    Text value = readOne(in);
    // Records list keys in ascending order, so the end is almost always the right place.
    values.insert_or_assign(values.end(), std::move(key), std::move(value));
  }
}

// Element readers as function objects, so the container loops inline them.
constexpr auto OneString = [](detail::RecordInput& in) { return in.String(); };
constexpr auto OneWString = [](detail::RecordInput& in) { return in.WString(); };

}  // namespace

StreamReader::StreamReader(Stream& stream) : stream_(stream) {}

StreamReader::~StreamReader() = default;

int StreamReader::ReadInt32() { return static_cast<int>(ReadUInt32()); }

unsigned int StreamReader::ReadUInt32() {
  // A bare number needs no bound, so the stream is not asked for its size here.
  unsigned char bytes[4] = {};
  stream_.Read(bytes, sizeof bytes);
  return static_cast<unsigned int>(bytes[0]) << 24 | static_cast<unsigned int>(bytes[1]) << 16 |
         static_cast<unsigned int>(bytes[2]) << 8 | static_cast<unsigned int>(bytes[3]);
}

long long StreamReader::ReadInt64() { return static_cast<long long>(ReadUInt64()); }

unsigned long long StreamReader::ReadUInt64() {
  const unsigned long long high = ReadUInt32();
  return high << 32 | ReadUInt32();
}

float StreamReader::ReadFloat() { return std::stof(ReadString()); }

std::string StreamReader::ReadString() { return detail::RecordInput(stream_).String(); }

std::wstring StreamReader::ReadWString() { return detail::RecordInput(stream_).WString(); }

void StreamReader::ReadIntVector(std::vector<int>& values) { ReadInts(stream_, values); }

void StreamReader::ReadIntVector(std::vector<unsigned int>& values) { ReadInts(stream_, values); }

void StreamReader::ReadStringVector(std::vector<std::string>& values) {
  ReadTexts(stream_, values, OneString);
}

void StreamReader::ReadStringVector(std::vector<std::wstring>& values) {
  ReadTexts(stream_, values, OneWString);
}

void StreamReader::ReadStringMap(std::map<std::string, std::string>& values) {
  ReadMap(stream_, values, OneString);
}

void StreamReader::ReadStringMap(std::map<std::wstring, std::wstring>& values) {
  ReadMap(stream_, values, OneWString);
}

FILETIME StreamReader::ReadFileTime() {
  FILETIME value;
  value.dwLowDateTime = ReadUInt32();
  value.dwHighDateTime = ReadUInt32();
  return value;
}

}  // namespace DE
