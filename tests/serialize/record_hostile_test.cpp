// Records from outside: huge counts, odd wide counts and records cut short give the documented
// results (bounded strings, containers that stop with the data), never a crash or a huge
// allocation.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "DESerialize.h"

namespace {

std::string Bytes(std::initializer_list<int> values) {
  std::string out;
  for (int v : values) out.push_back(static_cast<char>(v));
  return out;
}

// A stream that cannot seek (as a pipe): the reader cannot ask how much is left.
class PipeStream : public DE::Stream {
 public:
  explicit PipeStream(std::string data) : data_(std::move(data)) {}
  unsigned int Read(void* buf, unsigned int count) override {
    const std::size_t n = std::min<std::size_t>(count, data_.size() - position_);
    std::memcpy(buf, data_.data() + position_, n);
    position_ += n;
    return static_cast<unsigned int>(n);
  }
  unsigned int Write(const void*, unsigned int) override { return 0; }
  long long Seek(long long, DE::SeekOrigin) override { return -1; }
  void SetSize(long long) override {}
  std::size_t Consumed() const { return position_; }

 private:
  std::string data_;
  std::size_t position_ = 0;
};

DE::MemoryrStream At0(const std::string& bytes) {
  DE::MemoryrStream stream(bytes.data(), static_cast<int>(bytes.size()));
  stream.Seek(0, DE::Begin);
  return stream;
}

TEST(RecordHostile, StringCounts) {
  // A count far beyond the data: the string holds what is there, not 2 GiB.
  DE::MemoryrStream huge = At0(Bytes({0x7F, 0xFF, 0xFF, 0xFF}) + "hello");
  EXPECT_EQ("hello", DE::StreamReader(huge).ReadString());
  EXPECT_EQ(9, huge.Position());
  // Negative counts are empty and read nothing more.
  for (int first : {0x80, 0xFF}) {
    DE::MemoryrStream negative = At0(Bytes({first, 0, 0, 0}) + "data");
    EXPECT_EQ("", DE::StreamReader(negative).ReadString());
    EXPECT_EQ(4, negative.Position());
  }
  // Wide: an even huge count takes the units present; half a unit ends with a zero low byte.
  DE::MemoryrStream wide = At0(Bytes({0x7F, 0xFF, 0xFF, 0xFE, 0, 'A', 0, 'B', 0x4E}));
  EXPECT_EQ(std::wstring(L"AB\u4e00"), DE::StreamReader(wide).ReadWString());
  DE::MemoryrStream oddHuge = At0(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 'A'}));
  EXPECT_EQ(L"", DE::StreamReader(oddHuge).ReadWString());
  EXPECT_EQ(4, oddHuge.Position());

  // A stream that cannot tell its size: a short count is zero-padded as read ...
  PipeStream pipe(Bytes({0, 0, 0, 10}) + "abcd");
  EXPECT_EQ(std::string("abcd") + std::string(6, '\0'), DE::StreamReader(pipe).ReadString());
  // ... and a huge one is read in steps and ends with the last byte that came.
  PipeStream bigPipe(Bytes({0x7F, 0xFF, 0xFF, 0xFF}) + std::string(100000, 'q'));
  EXPECT_EQ(std::string(100000, 'q'), DE::StreamReader(bigPipe).ReadString());
  PipeStream widePipe(Bytes({0x7F, 0xFF, 0xFF, 0xFE, 0, 'x'}));
  EXPECT_EQ(L"x", DE::StreamReader(widePipe).ReadWString());
}

TEST(RecordHostile, ContainersStopWithTheData) {
  const std::string twoStrings = Bytes({0, 0, 0, 1, 'a', 0, 0, 0, 1, 'b'});
  DE::MemoryrStream s = At0(Bytes({0x7F, 0xFF, 0xFF, 0xFF}) + twoStrings);
  std::vector<std::string> strings;
  DE::StreamReader(s).ReadStringVector(strings);
  EXPECT_EQ((std::vector<std::string>{"a", "b"}), strings);

  DE::MemoryrStream w = At0(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 2, 0, 'w'}));
  std::vector<std::wstring> wides;
  DE::StreamReader(w).ReadStringVector(wides);
  EXPECT_EQ(std::vector<std::wstring>{L"w"}, wides);

  // The element cut short is kept, zero-filled, then reading stops.
  DE::MemoryrStream ints = At0(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 5, 0, 0, 1}));
  std::vector<int> values;
  DE::StreamReader(ints).ReadIntVector(values);
  EXPECT_EQ((std::vector<int>{5, 256}), values);

  DE::MemoryrStream m =
      At0(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1, 'k', 0, 0, 0, 1, 'v', 0, 0, 0, 1, 'z'}));
  std::map<std::string, std::string> map;
  DE::StreamReader(m).ReadStringMap(map);
  EXPECT_EQ((std::map<std::string, std::string>{{"k", "v"}, {"z", ""}}), map);

  // A count with nothing after it gives an empty container.
  DE::MemoryrStream countOnly = At0(Bytes({0, 0, 0, 3}));
  std::vector<unsigned int> none;
  DE::StreamReader(countOnly).ReadIntVector(none);
  EXPECT_TRUE(none.empty());

  // The same over a stream that cannot tell its size: the first empty read ends it.
  PipeStream pipe(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1, 'p'}));
  std::vector<std::string> piped;
  DE::StreamReader(pipe).ReadStringVector(piped);
  EXPECT_EQ((std::vector<std::string>{"p", ""}), piped);

  // Item lists too.
  DE::SimpleFileItem item;
  item.Name = L"n";
  DE::MemoryrStream list;
  DE::StreamWriter(list).WriteUInt32(0xFFFFFFFFu);
  item.SaveToStream(list);
  list.Seek(0, DE::Begin);
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, list);
  ASSERT_EQ(1u, items.size());
  EXPECT_EQ(L"n", items[0]->Name);
  DE::SimpleFileItem::ClearItemList(items);

  EXPECT_EQ((std::vector<std::string>{"a", "b"}),
            DE::UnSerializeStringVector(Bytes({0xFF, 0xFF, 0xFF, 0xFF}) + twoStrings));
  EXPECT_TRUE(DE::UnSerializeWStringMap(Bytes({0x7F, 0xFF, 0xFF, 0xFF})).empty());
}

TEST(RecordHostile, ShortNumbersAndFloats) {
  // Missing bytes read as zeros.
  DE::MemoryrStream two = At0(Bytes({0x12, 0x34}));
  EXPECT_EQ(0x12340000u, DE::StreamReader(two).ReadUInt32());
  DE::MemoryrStream five = At0(Bytes({1, 2, 3, 4, 5}));
  EXPECT_EQ(0x0102030405000000ull, DE::StreamReader(five).ReadUInt64());
  DE::MemoryrStream empty;
  DE::StreamReader reader(empty);
  EXPECT_EQ(0, reader.ReadInt32());
  EXPECT_EQ("", reader.ReadString());
  EXPECT_EQ(L"", reader.ReadWString());
  const FILETIME ft = reader.ReadFileTime();
  EXPECT_EQ(0u, ft.dwLowDateTime | ft.dwHighDateTime);

  // Float text that is no number raises the standard library's errors.
  DE::MemoryrStream text = At0(Bytes({0, 0, 0, 3}) + "abc");
  EXPECT_THROW(DE::StreamReader(text).ReadFloat(), std::invalid_argument);
  DE::MemoryrStream big = At0(Bytes({0, 0, 0, 5}) + "1e999");
  EXPECT_THROW(DE::StreamReader(big).ReadFloat(), std::out_of_range);
  DE::MemoryrStream nothing;
  EXPECT_THROW(DE::StreamReader(nothing).ReadFloat(), std::invalid_argument);
}

}  // namespace
