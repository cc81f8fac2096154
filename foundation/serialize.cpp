// The Serialize* / UnSerialize* byte-string forms of the record format's containers.
#include <climits>

#include "DESerialize.h"

namespace DE {
namespace {

template <typename Container, typename WriteFn>
std::string Encode(const Container& values, WriteFn write) {
  MemoryrStream stream;
  StreamWriter writer(stream);
  (writer.*write)(values);
  return stream.ToString();
}

template <typename Container, typename ReadFn>
Container Decode(std::string& bytes, ReadFn read) {
  Container values;
  if (bytes.empty() || bytes.size() > INT_MAX) return values;
  // The bytes are ours (taken by value), so the stream reads them in place rather than copying.
  MemoryrStream stream(&bytes[0], static_cast<int>(bytes.size()), true);
  stream.Seek(0, Begin);
  StreamReader reader(stream);
  (reader.*read)(values);
  return values;
}

using StringVector = std::vector<std::string>;
using WStringVector = std::vector<std::wstring>;
using StringMap = std::map<std::string, std::string>;
using WStringMap = std::map<std::wstring, std::wstring>;

}  // namespace

std::string SerializeStringVector(const StringVector& values) {
  return Encode(values,
                static_cast<void (StreamWriter::*)(const StringVector&)>(&StreamWriter::WriteStringVector));
}

std::string SerializeWStringVector(const WStringVector& values) {
  return Encode(values,
                static_cast<void (StreamWriter::*)(const WStringVector&)>(&StreamWriter::WriteStringVector));
}

std::string SerializeStringMap(const StringMap& values) {
  return Encode(values, static_cast<void (StreamWriter::*)(const StringMap&)>(&StreamWriter::WriteStringMap));
}

std::string SerializeWStringMap(const WStringMap& values) {
  return Encode(values,
                static_cast<void (StreamWriter::*)(const WStringMap&)>(&StreamWriter::WriteStringMap));
}

StringVector UnSerializeStringVector(std::string bytes) {
  return Decode<StringVector>(
      bytes, static_cast<void (StreamReader::*)(StringVector&)>(&StreamReader::ReadStringVector));
}

WStringVector UnSerializeWStringVector(std::string bytes) {
  return Decode<WStringVector>(
      bytes, static_cast<void (StreamReader::*)(WStringVector&)>(&StreamReader::ReadStringVector));
}

StringMap UnSerializeStringMap(std::string bytes) {
  return Decode<StringMap>(bytes,
                           static_cast<void (StreamReader::*)(StringMap&)>(&StreamReader::ReadStringMap));
}

WStringMap UnSerializeWStringMap(std::string bytes) {
  return Decode<WStringMap>(bytes,
                            static_cast<void (StreamReader::*)(WStringMap&)>(&StreamReader::ReadStringMap));
}

}  // namespace DE
