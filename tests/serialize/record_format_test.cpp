// The record format byte for byte (vectors both builds must produce) and its readers; records from outside
// (huge counts, odd wide counts, records cut short) give the documented results, never a crash.
#include <gtest/gtest.h>

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

template <typename WriteFn>
std::string Encoded(WriteFn write) {
  DE::MemoryrStream stream;
  DE::StreamWriter writer(stream);
  write(writer);
  return stream.ToString();
}

// The bytes as a stream positioned at 0.
class Input : public DE::MemoryrStream {
 public:
  explicit Input(const std::string& bytes) : MemoryrStream(bytes.data(), static_cast<int>(bytes.size())) {
    MemoryrStream::Seek(0, DE::Begin);
  }
};

// A stream that cannot seek (as a pipe): the reader cannot ask how much is left.
class PipeStream : public Input {
 public:
  using Input::Input;
  long long Seek(long long, DE::SeekOrigin) override { return -1; }
};

std::string Saved(DE::SimpleFileItem& item) {
  DE::MemoryrStream stream;
  item.SaveToStream(stream);
  return stream.ToString();
}

TEST(RecordFormat, KnownAnswers) {
  using W = DE::StreamWriter;
  EXPECT_EQ(Bytes({0, 0, 0, 0}), Encoded([](W& w) { w.WriteString(""); }));
  EXPECT_EQ(Bytes({0, 0, 0, 3, 'a', 0, 0xE9}),
            Encoded([](W& w) { w.WriteString(std::string("a\0\xE9", 3)); }));
  EXPECT_EQ(Bytes({0, 0, 0, 6, 0, 0xE9, 0x4E, 0x2D, 0xFF, 0xFD}),
            Encoded([](W& w) { w.WriteWString(L"\u00e9\u4e2d\ufffd"); }));
  // Outside the BMP: a surrogate pair, high unit first, each unit big-endian.
  EXPECT_EQ(Bytes({0, 0, 0, 6, 0, 'a', 0xD8, 0x3D, 0xDE, 0x00}),
            Encoded([](W& w) { w.WriteWString(L"a\U0001F600"); }));
  EXPECT_EQ(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}), Encoded([](W& w) { w.WriteInt64(-2); }));
  EXPECT_EQ(Bytes({1, 2, 3, 4, 5, 6, 7, 8}), Encoded([](W& w) { w.WriteUInt64(0x0102030405060708ull); }));
  EXPECT_EQ(Bytes({0x80, 0, 0, 1}), Encoded([](W& w) { w.WriteUInt32(0x80000001u); }));
  EXPECT_EQ(Bytes({0, 0, 0, 9}) + "-0.250000", Encoded([](W& w) { w.WriteFloat(-0.25f); }));
  const FILETIME ft{0x11223344, 0x55667788};
  EXPECT_EQ(Bytes({0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}),
            Encoded([&](W& w) { w.WriteFileTime(ft); }));
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF}), Encoded([](W& w) {
              w.WriteIntVector(std::vector<int>{1, -1});
            }));
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 'x', 0, 0, 0, 0}), Encoded([](W& w) {
              w.WriteStringVector(std::vector<std::string>{"x", ""});
            }));
  // Maps go in ascending key order: "a" before "b" whatever the insertion order.
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 'a', 0, 0, 0, 1, '2', 0, 0, 0, 1, 'b', 0, 0, 0, 1, '1'}),
            DE::SerializeStringMap({{"b", "1"}, {"a", "2"}}));
  EXPECT_EQ(Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0, 'k', 0, 0, 0, 4, 0, 'v', 0, 0}),
            DE::SerializeWStringMap({{L"k", std::wstring(L"v\0", 2)}}));

  // A SimpleFileItem: the fourteen items in order, nothing else.
  DE::SimpleFileItem item;
  EXPECT_EQ(std::string(60, '\0'), Saved(item));
  item.Flag = true;
  item.Path = L"C:\\";
  item.Name = L"f";
  item.Value64 = 0x0102030405060708LL;
  for (unsigned int i = 0; i < 10; ++i) item.Values[i] = i == 9 ? 0xA0B0C0D0u : i;
  std::string expected =
      Bytes({0, 0, 0, 1, 0, 0, 0, 6, 0, 'C', 0, ':', 0, '\\', 0, 0, 0, 2, 0, 'f', 1, 2, 3, 4, 5, 6, 7, 8});
  for (int i = 0; i < 9; ++i) expected += Bytes({0, 0, 0, i});
  expected += Bytes({0xA0, 0xB0, 0xC0, 0xD0});
  EXPECT_EQ(expected, Saved(item));
  EXPECT_EQ(L"C:\\f", item.FullPathName());

  // A list: count, then the items (any non-zero Flag reads as true); the caller frees them.
  Input list(Bytes({0, 0, 0, 2, 0, 0, 0, 7}) + std::string(56, '\0') + expected);
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, list);
  ASSERT_EQ(2u, items.size());
  EXPECT_TRUE(items[0]->Flag);
  EXPECT_EQ(expected, Saved(*items[1]));
  EXPECT_EQ(list.Size(), list.Position());
  DE::SimpleFileItem::ClearItemList(items);
  EXPECT_TRUE(items.empty());
  std::vector<DE::BaseItem*> bases{new DE::SimpleFileItem, nullptr, new DE::SimpleFileItem};
  DE::BaseItem::ClearItemList(bases);
  EXPECT_TRUE(bases.empty());
}

TEST(RecordFormat, Readers) {
  DE::MemoryrStream stream;
  DE::StreamWriter writer(stream);
  const FILETIME ft{0xDEADBEEF, 0x01D9ABCD};
  const std::wstring wide = std::wstring(L"x\u00e9\U0001F600\u4e2d") + std::wstring(1, L'\0') + L"z";
  writer.WriteInt32(-123456);
  writer.WriteUInt64(18000000000000000000ull);
  writer.WriteFloat(3.25f);
  writer.WriteString(std::string("bin\0ary\xff", 8));
  writer.WriteWString(wide);
  writer.WriteIntVector(std::vector<int>{-1, 0, 7});
  writer.WriteStringVector(std::vector<std::wstring>{L"\U0010FFFF", L""});
  writer.WriteStringMap(std::map<std::string, std::string>{{"k1", "v1"}, {"", "empty key"}});
  writer.WriteFileTime(ft);

  stream.Seek(0, DE::Begin);
  DE::StreamReader reader(stream);
  EXPECT_EQ(-123456, reader.ReadInt32());
  EXPECT_EQ(18000000000000000000ull, reader.ReadUInt64());
  EXPECT_EQ(3.25f, reader.ReadFloat());
  EXPECT_EQ(std::string("bin\0ary\xff", 8), reader.ReadString());
  EXPECT_EQ(wide, reader.ReadWString());
  std::vector<int> ints{99};  // readers add to what the container holds
  reader.ReadIntVector(ints);
  EXPECT_EQ((std::vector<int>{99, -1, 0, 7}), ints);
  std::vector<std::wstring> wides;
  reader.ReadStringVector(wides);
  EXPECT_EQ((std::vector<std::wstring>{L"\U0010FFFF", L""}), wides);
  std::map<std::string, std::string> map{{"k1", "old"}, {"keep", "x"}};
  reader.ReadStringMap(map);
  EXPECT_EQ((std::map<std::string, std::string>{{"k1", "v1"}, {"", "empty key"}, {"keep", "x"}}), map);
  const FILETIME back = reader.ReadFileTime();
  EXPECT_EQ(ft.dwLowDateTime, back.dwLowDateTime);
  EXPECT_EQ(ft.dwHighDateTime, back.dwHighDateTime);
  EXPECT_EQ(stream.Size(), stream.Position());

  // Unpaired surrogates travel unchanged both ways.
  const std::wstring lone(1, static_cast<wchar_t>(0xD800));
  const std::string loneBytes = Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0xD8, 0x00});
  EXPECT_EQ(loneBytes, DE::SerializeWStringVector({lone}));
  EXPECT_EQ(std::vector<std::wstring>{lone}, DE::UnSerializeWStringVector(loneBytes));
  if constexpr (sizeof(wchar_t) == 4) {
    // Only a 32-bit wchar_t can hold a value beyond U+10FFFF; it is written as U+FFFD.
    const std::wstring beyond(1, static_cast<wchar_t>(0x110000));
    EXPECT_EQ(Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0xFF, 0xFD}), DE::SerializeWStringVector({beyond}));
  }
}

TEST(RecordHostile, StringCounts) {
  // A count far beyond the data: the string holds what is there, not 2 GiB.
  Input huge(Bytes({0x7F, 0xFF, 0xFF, 0xFF}) + "hello");
  EXPECT_EQ("hello", DE::StreamReader(huge).ReadString());
  EXPECT_EQ(9, huge.Position());
  // A negative count is empty and reads nothing more.
  Input negative(Bytes({0x80, 0, 0, 0}) + "data");
  EXPECT_EQ("", DE::StreamReader(negative).ReadString());
  EXPECT_EQ(4, negative.Position());
  // Wide: an even huge count takes the units present; half a unit ends with a zero low byte.
  Input wide(Bytes({0x7F, 0xFF, 0xFF, 0xFE, 0, 'A', 0, 'B', 0x4E}));
  EXPECT_EQ(std::wstring(L"AB\u4e00"), DE::StreamReader(wide).ReadWString());
  Input oddHuge(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 'A'}));  // odd: "", the data left unread
  EXPECT_EQ(L"", DE::StreamReader(oddHuge).ReadWString());
  EXPECT_EQ(4, oddHuge.Position());

  // A stream that cannot tell its size: a short count is zero-padded as read ...
  PipeStream pipe(Bytes({0, 0, 0, 10}) + "abcd");
  EXPECT_EQ(std::string("abcd") + std::string(6, '\0'), DE::StreamReader(pipe).ReadString());
  // ... and a huge one is read in steps and ends with the last byte that came.
  PipeStream bigPipe(Bytes({0x7F, 0xFF, 0xFF, 0xFF}) + std::string(100000, 'q'));
  EXPECT_EQ(std::string(100000, 'q'), DE::StreamReader(bigPipe).ReadString());
}

TEST(RecordHostile, ContainersStopWithTheData) {
  Input s(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1, 'a', 0, 0, 0, 1, 'b'}));
  std::vector<std::string> strings;
  DE::StreamReader(s).ReadStringVector(strings);
  EXPECT_EQ((std::vector<std::string>{"a", "b"}), strings);

  // The element cut short is kept, zero-filled, then reading stops.
  Input ints(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 5, 0, 0, 1}));
  std::vector<unsigned int> values;
  DE::StreamReader(ints).ReadIntVector(values);
  EXPECT_EQ((std::vector<unsigned int>{5, 256}), values);

  Input m(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1, 'k', 0, 0, 0, 1, 'v', 0, 0, 0, 1, 'z'}));
  std::map<std::string, std::string> map;
  DE::StreamReader(m).ReadStringMap(map);
  EXPECT_EQ((std::map<std::string, std::string>{{"k", "v"}, {"z", ""}}), map);

  // The same over a stream that cannot tell its size: the first empty read ends it.
  PipeStream pipe(Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1, 'p'}));
  std::vector<std::string> piped;
  DE::StreamReader(pipe).ReadStringVector(piped);
  EXPECT_EQ((std::vector<std::string>{"p", ""}), piped);

  // Item lists too.
  Input list(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 'n'}) +
             std::string(48, '\0'));
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, list);
  ASSERT_EQ(1u, items.size());
  EXPECT_EQ(L"n", items[0]->Name);
  DE::SimpleFileItem::ClearItemList(items);
  // A count with nothing after it gives an empty container.
  EXPECT_TRUE(DE::UnSerializeWStringMap(Bytes({0x7F, 0xFF, 0xFF, 0xFF})).empty());
}

TEST(RecordHostile, ShortNumbersAndFloats) {
  // Missing bytes read as zeros.
  Input five(Bytes({1, 2, 3, 4, 5}));
  EXPECT_EQ(0x0102030405000000ull, DE::StreamReader(five).ReadUInt64());
  DE::MemoryrStream empty;
  DE::StreamReader reader(empty);
  EXPECT_EQ(0, reader.ReadInt32());
  EXPECT_EQ(L"", reader.ReadWString());
  const FILETIME ft = reader.ReadFileTime();
  EXPECT_EQ(0u, ft.dwLowDateTime | ft.dwHighDateTime);

  // Float text that is no number raises the standard library's errors.
  Input text(Bytes({0, 0, 0, 3}) + "abc");
  EXPECT_THROW(DE::StreamReader(text).ReadFloat(), std::invalid_argument);
  Input big(Bytes({0, 0, 0, 5}) + "1e999");
  EXPECT_THROW(DE::StreamReader(big).ReadFloat(), std::out_of_range);
  EXPECT_THROW(DE::StreamReader(empty).ReadFloat(), std::invalid_argument);
}

}  // namespace
