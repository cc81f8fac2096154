// libFuzzer target for the record format's readers: every StreamReader operation, the item-list
// reader and every UnSerialize*, over a memory stream and over a stream that cannot seek.
//
// The first input byte chooses the sequence of reads; the rest is the record. Reading must end,
// stay in bounds and allocate no more than the input can justify (a string at most the bytes
// left; over the unseekable stream at most the bytes left plus one 64 KiB step), and a decoded
// container must encode and decode again to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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
  PipeStream(const char* data, std::size_t size) : data_(data), size_(size) {}
  unsigned int Read(void* buf, unsigned int count) override {
    const std::size_t n = count < size_ - position_ ? count : size_ - position_;
    std::memcpy(buf, data_ + position_, n);
    position_ += n;
    return static_cast<unsigned int>(n);
  }
  unsigned int Write(const void*, unsigned int) override { return 0; }
  long long Seek(long long, DE::SeekOrigin) override { return -1; }
  void SetSize(long long) override {}

 private:
  const char* data_;
  std::size_t size_;
  std::size_t position_ = 0;
};

// One pass of reads chosen by `plan` (two bits per step).
void ReadAll(DE::Stream& stream, unsigned plan, std::size_t inputSize) {
  const std::size_t stepBound = inputSize + 64 * 1024;  // what any one string may hold
  DE::StreamReader reader(stream);
  for (int step = 0; step < 12; ++step, plan = (plan >> 2) | (plan << 22)) {
    switch ((plan & 3) + 4 * (step % 4)) {
      case 0:
        reader.ReadInt32();
        reader.ReadUInt64();
        break;
      case 1:
        Check(reader.ReadString().size() <= stepBound);
        break;
      case 2:
        Check(reader.ReadWString().size() <= stepBound);
        break;
      case 3:
        try {
          reader.ReadFloat();
        } catch (const std::invalid_argument&) {
        } catch (const std::out_of_range&) {
        }
        break;
      case 4: {
        std::vector<int> ints;
        reader.ReadIntVector(ints);
        Check(ints.size() <= inputSize / 4 + 1);
        break;
      }
      case 5: {
        std::vector<std::string> strings;
        reader.ReadStringVector(strings);
        Check(strings.size() <= inputSize / 4 + 1);
        break;
      }
      case 6: {
        std::vector<std::wstring> strings;
        reader.ReadStringVector(strings);
        Check(strings.size() <= inputSize / 4 + 1);
        break;
      }
      case 7: {
        std::map<std::string, std::string> map;
        reader.ReadStringMap(map);
        break;
      }
      case 8: {
        std::map<std::wstring, std::wstring> map;
        reader.ReadStringMap(map);
        break;
      }
      case 9:
        reader.ReadFileTime();
        break;
      case 10: {
        std::vector<DE::SimpleFileItem*> items;
        DE::SimpleFileItem::ReadItemListFromStream(items, stream);
        Check(items.size() <= inputSize / 4 + 1);
        DE::SimpleFileItem::ClearItemList(items);
        break;
      }
      default: {
        DE::SimpleFileItem item;
        item.LoadFromStream(stream);
        DE::SimpleFileItem copy;
        copy.Assign(item);
        Check(copy.Path == item.Path && copy.Name == item.Name && copy.Value64 == item.Value64);
        break;
      }
    }
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
  PipeStream pipe(record.data(), record.size());
  ReadAll(pipe, plan, record.size());

  RoundTrip<std::vector<std::string>>(record, DE::SerializeStringVector, DE::UnSerializeStringVector);
  RoundTrip<std::vector<std::wstring>>(record, DE::SerializeWStringVector, DE::UnSerializeWStringVector);
  RoundTrip<std::map<std::string, std::string>>(record, DE::SerializeStringMap, DE::UnSerializeStringMap);
  RoundTrip<std::map<std::wstring, std::wstring>>(record, DE::SerializeWStringMap, DE::UnSerializeWStringMap);
  return 0;
}
