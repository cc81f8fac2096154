// libFuzzer target for the record format's readers: every StreamReader operation, the item-list reader
// and every UnSerialize*, over a memory stream and over one that cannot seek. The first byte chooses
// the reads. Reading must end, stay in bounds and allocate no more than the input justifies (a string
// at most the bytes left plus one 64 KiB step); a decoded container must encode and decode to itself.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "DESerialize.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// A stream that cannot tell its size, as a pipe.
class PipeStream : public DE::Stream {
 public:
  explicit PipeStream(const std::string& data) : data_(data) {}
  unsigned int Read(void* buf, unsigned int count) override {
    const std::size_t n = data_.copy(static_cast<char*>(buf), count, position_);
    position_ += n;
    return static_cast<unsigned int>(n);
  }
  unsigned int Write(const void*, unsigned int) override { return 0; }
  long long Seek(long long, DE::SeekOrigin) override { return -1; }
  void SetSize(long long) override {}

 private:
  const std::string& data_;
  std::size_t position_ = 0;
};

using R = DE::StreamReader;

// Reads a container with `read`; returns its size.
template <typename Container>
std::size_t Count(R& reader, void (R::*read)(Container&)) {
  Container values;
  (reader.*read)(values);
  return values.size();
}

void ReadFloat(R& reader) {
  try {
    reader.ReadFloat();
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  }
}

void ReadItems(DE::Stream& stream, std::size_t bound) {
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, stream);
  Check(items.size() <= bound);
  DE::SimpleFileItem::ClearItemList(items);
}

void ReadItem(DE::Stream& stream) {
  DE::SimpleFileItem item, copy;
  item.LoadFromStream(stream);
  copy.Assign(item);
  Check(copy.Path == item.Path && copy.Name == item.Name && copy.Value64 == item.Value64);
}

// One pass of reads chosen by `plan` (two bits per step).
void ReadAll(DE::Stream& stream, unsigned plan, std::size_t inputSize) {
  const std::size_t strings = inputSize + 64 * 1024, counts = inputSize / 4 + 1;
  R r(stream);
  const std::function<void()> reads[] = {
      [&] {
        r.ReadInt32();
        r.ReadUInt64();
      },
      [&] { Check(r.ReadString().size() <= strings); },
      [&] { Check(r.ReadWString().size() <= strings); },
      [&] { ReadFloat(r); },
      [&] { Check(Count<std::vector<int>>(r, &R::ReadIntVector) <= counts); },
      [&] { Check(Count<std::vector<std::string>>(r, &R::ReadStringVector) <= counts); },
      [&] { Check(Count<std::vector<std::wstring>>(r, &R::ReadStringVector) <= counts); },
      [&] { Count<std::map<std::string, std::string>>(r, &R::ReadStringMap); },
      [&] { Count<std::map<std::wstring, std::wstring>>(r, &R::ReadStringMap); },
      [&] { r.ReadFileTime(); },
      [&] { ReadItems(stream, counts); },
      [&] { ReadItem(stream); }};
  for (int step = 0; step < 12; ++step, plan = (plan >> 2) | (plan << 22)) {
    reads[std::min((plan & 3) + 4u * (step % 4), 11u)]();
  }
}

template <typename Container, typename Encode, typename Decode>
void RoundTrip(const std::string& bytes, Encode encode, Decode decode) {
  const Container decoded = decode(bytes);
  Check(decode(encode(decoded)) == decoded);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned plan = data[0] * 0x010101u;
  const std::string record(reinterpret_cast<const char*>(data + 1), size - 1);
  DE::MemoryrStream memory(record.data(), static_cast<int>(record.size()));
  memory.Seek(0, DE::Begin);
  ReadAll(memory, plan, record.size());
  PipeStream pipe(record);
  ReadAll(pipe, plan, record.size());

  RoundTrip<std::vector<std::string>>(record, DE::SerializeStringVector, DE::UnSerializeStringVector);
  RoundTrip<std::vector<std::wstring>>(record, DE::SerializeWStringVector, DE::UnSerializeWStringVector);
  RoundTrip<std::map<std::string, std::string>>(record, DE::SerializeStringMap, DE::UnSerializeStringMap);
  RoundTrip<std::map<std::wstring, std::wstring>>(record, DE::SerializeWStringMap, DE::UnSerializeWStringMap);
  return 0;
}
