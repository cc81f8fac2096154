// The record format, byte for byte: known-answer vectors that both builds must produce, and
// round trips through the readers, records and byte-string helpers.
#include <gtest/gtest.h>

#include <cstdint>
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

DE::MemoryrStream StreamOf(const std::string& bytes) {
  return DE::MemoryrStream(bytes.data(), static_cast<int>(bytes.size()));
}

TEST(RecordFormat, KnownAnswers) {
  using W = DE::StreamWriter;
  EXPECT_EQ(Bytes({0, 0, 0, 2, 'a', 'b'}), Encoded([](W& w) { w.WriteString("ab"); }));
  EXPECT_EQ(Bytes({0, 0, 0, 0}), Encoded([](W& w) { w.WriteString(""); }));
  EXPECT_EQ(Bytes({0, 0, 0, 3, 'a', 0, 0xE9}),
            Encoded([](W& w) { w.WriteString(std::string("a\0\xE9", 3)); }));
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0x41}), Encoded([](W& w) { w.WriteWString(L"A"); }));
  EXPECT_EQ(Bytes({0, 0, 0, 0}), Encoded([](W& w) { w.WriteWString(L""); }));
  EXPECT_EQ(Bytes({0, 0, 0, 6, 0, 0xE9, 0x4E, 0x2D, 0xFF, 0xFD}),
            Encoded([](W& w) { w.WriteWString(L"\u00e9\u4e2d\ufffd"); }));
  // Outside the BMP: a surrogate pair, high unit first, each unit big-endian.
  EXPECT_EQ(Bytes({0, 0, 0, 6, 0, 'a', 0xD8, 0x3D, 0xDE, 0x00}),
            Encoded([](W& w) { w.WriteWString(L"a\U0001F600"); }));
  EXPECT_EQ(Bytes({0, 0, 0, 0, 0, 0, 0, 1}), Encoded([](W& w) { w.WriteInt64(1); }));
  EXPECT_EQ(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}), Encoded([](W& w) { w.WriteInt64(-2); }));
  EXPECT_EQ(Bytes({1, 2, 3, 4, 5, 6, 7, 8}), Encoded([](W& w) { w.WriteUInt64(0x0102030405060708ull); }));
  EXPECT_EQ(Bytes({0xFF, 0xFF, 0xFF, 0xFE}), Encoded([](W& w) { w.WriteInt32(-2); }));
  EXPECT_EQ(Bytes({0x80, 0, 0, 1}), Encoded([](W& w) { w.WriteUInt32(0x80000001u); }));
  EXPECT_EQ(Bytes({0, 0, 0, 8}) + "1.500000", Encoded([](W& w) { w.WriteFloat(1.5f); }));
  EXPECT_EQ(Bytes({0, 0, 0, 9}) + "-0.250000", Encoded([](W& w) { w.WriteFloat(-0.25f); }));
  EXPECT_EQ(Bytes({0, 0, 0, 15}) + "16777216.000000", Encoded([](W& w) { w.WriteFloat(16777216.0f); }));
  FILETIME ft;
  ft.dwLowDateTime = 0x11223344;
  ft.dwHighDateTime = 0x55667788;
  EXPECT_EQ(Bytes({0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}),
            Encoded([&](W& w) { w.WriteFileTime(ft); }));
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF}), Encoded([](W& w) {
              w.WriteIntVector(std::vector<int>{1, -1});
            }));
  EXPECT_EQ(Bytes({0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF}),
            Encoded([](W& w) { w.WriteIntVector(std::vector<unsigned int>{0xFFFFFFFFu}); }));
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 'x', 0, 0, 0, 0}), Encoded([](W& w) {
              w.WriteStringVector(std::vector<std::string>{"x", ""});
            }));
  EXPECT_EQ(Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0, 'x'}),
            Encoded([](W& w) { w.WriteStringVector(std::vector<std::wstring>{L"x"}); }));
  // Maps go in ascending key order: "a" before "b" whatever the insertion order.
  EXPECT_EQ(Bytes({0, 0, 0, 2, 0, 0, 0, 1, 'a', 0, 0, 0, 1, '2', 0, 0, 0, 1, 'b', 0, 0, 0, 1, '1'}),
            DE::SerializeStringMap({{"b", "1"}, {"a", "2"}}));
  EXPECT_EQ(Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0, 'k', 0, 0, 0, 4, 0, 'v', 0, 0}),
            DE::SerializeWStringMap({{L"k", std::wstring(L"v\0", 2)}}));
  EXPECT_EQ(Bytes({0, 0, 0, 0}), DE::SerializeStringVector({}));
  EXPECT_EQ(Bytes({0, 0, 0, 0}), DE::SerializeWStringVector({}));
  EXPECT_EQ(Bytes({0, 0, 0, 0}), DE::SerializeStringMap({}));
  EXPECT_EQ(Bytes({0, 0, 0, 1, 0, 0, 0, 4, 0xD8, 0x00, 0xDC, 0x00}),
            DE::SerializeWStringVector({L"\U00010000"}));

  // A SimpleFileItem: the fourteen items in order, nothing else.
  DE::SimpleFileItem item;
  item.Flag = true;
  item.Path = L"C:\\";
  item.Name = L"f";
  item.Value64 = 0x0102030405060708LL;
  for (unsigned int i = 0; i < 10; ++i) item.Values[i] = i == 9 ? 0xA0B0C0D0u : i;
  std::string expected =
      Bytes({0, 0, 0, 1, 0, 0, 0, 6, 0, 'C', 0, ':', 0, '\\', 0, 0, 0, 2, 0, 'f', 1, 2, 3, 4, 5, 6, 7, 8});
  for (int i = 0; i < 9; ++i) expected += Bytes({0, 0, 0, i});
  expected += Bytes({0xA0, 0xB0, 0xC0, 0xD0});
  DE::MemoryrStream stream;
  item.SaveToStream(stream);
  EXPECT_EQ(expected, stream.ToString());
}

TEST(RecordFormat, ReadersRoundTrip) {
  DE::MemoryrStream stream;
  DE::StreamWriter writer(stream);
  FILETIME ft;
  ft.dwLowDateTime = 0xDEADBEEF;
  ft.dwHighDateTime = 0x01D9ABCD;
  const std::wstring wide = std::wstring(L"x\u00e9\U0001F600\u4e2d") + std::wstring(1, L'\0') + L"z";
  writer.WriteInt32(-123456);
  writer.WriteUInt32(4000000000u);
  writer.WriteInt64(-9000000000000000000LL);
  writer.WriteUInt64(18000000000000000000ull);
  writer.WriteFloat(3.25f);
  writer.WriteString(std::string("bin\0ary\xff", 8));
  writer.WriteWString(wide);
  writer.WriteIntVector(std::vector<int>{-1, 0, 7});
  writer.WriteIntVector(std::vector<unsigned int>{1, 4000000000u});
  writer.WriteStringVector(std::vector<std::string>{"a", "", "ccc"});
  writer.WriteStringVector(std::vector<std::wstring>{L"\U0010FFFF", L""});
  writer.WriteStringMap(std::map<std::string, std::string>{{"k1", "v1"}, {"", "empty key"}});
  writer.WriteStringMap(std::map<std::wstring, std::wstring>{{L"\u00fc", L"\U0001F600"}});
  writer.WriteFileTime(ft);

  stream.Seek(0, DE::Begin);
  DE::StreamReader reader(stream);
  EXPECT_EQ(-123456, reader.ReadInt32());
  EXPECT_EQ(4000000000u, reader.ReadUInt32());
  EXPECT_EQ(-9000000000000000000LL, reader.ReadInt64());
  EXPECT_EQ(18000000000000000000ull, reader.ReadUInt64());
  EXPECT_EQ(3.25f, reader.ReadFloat());
  EXPECT_EQ(std::string("bin\0ary\xff", 8), reader.ReadString());
  EXPECT_EQ(wide, reader.ReadWString());
  std::vector<int> ints{99};  // readers add to what the container holds
  reader.ReadIntVector(ints);
  EXPECT_EQ((std::vector<int>{99, -1, 0, 7}), ints);
  std::vector<unsigned int> uints;
  reader.ReadIntVector(uints);
  EXPECT_EQ((std::vector<unsigned int>{1, 4000000000u}), uints);
  std::vector<std::string> strings;
  reader.ReadStringVector(strings);
  EXPECT_EQ((std::vector<std::string>{"a", "", "ccc"}), strings);
  std::vector<std::wstring> wides;
  reader.ReadStringVector(wides);
  EXPECT_EQ((std::vector<std::wstring>{L"\U0010FFFF", L""}), wides);
  std::map<std::string, std::string> map{{"k1", "old"}, {"keep", "x"}};
  reader.ReadStringMap(map);
  EXPECT_EQ((std::map<std::string, std::string>{{"k1", "v1"}, {"", "empty key"}, {"keep", "x"}}), map);
  std::map<std::wstring, std::wstring> wideMap;
  reader.ReadStringMap(wideMap);
  EXPECT_EQ((std::map<std::wstring, std::wstring>{{L"\u00fc", L"\U0001F600"}}), wideMap);
  const FILETIME back = reader.ReadFileTime();
  EXPECT_EQ(ft.dwLowDateTime, back.dwLowDateTime);
  EXPECT_EQ(ft.dwHighDateTime, back.dwHighDateTime);
  EXPECT_EQ(stream.Size(), stream.Position());

  // An odd wide count gives "" and leaves the data unread.
  DE::MemoryrStream odd = StreamOf(Bytes({0, 0, 0, 3, 0, 'a', 0}));
  odd.Seek(0, DE::Begin);
  EXPECT_EQ(L"", DE::StreamReader(odd).ReadWString());
  EXPECT_EQ(4, odd.Position());

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

TEST(RecordFormat, ByteStringHelpers) {
  EXPECT_TRUE(DE::UnSerializeStringVector(DE::SerializeStringVector({})).empty());
  const std::vector<std::string> strings{"one", std::string("t\0o", 3), ""};
  EXPECT_EQ(strings, DE::UnSerializeStringVector(DE::SerializeStringVector(strings)));
  const std::vector<std::wstring> wides{L"\u00e4", L"\U0001F600x"};
  EXPECT_EQ(wides, DE::UnSerializeWStringVector(DE::SerializeWStringVector(wides)));
  const std::map<std::string, std::string> map{{"b", "2"}, {"a", "1"}};
  EXPECT_EQ(map, DE::UnSerializeStringMap(DE::SerializeStringMap(map)));
  const std::map<std::wstring, std::wstring> wideMap{{L"\u4e2d", L"\u6587"}, {L"", L"v"}};
  EXPECT_EQ(wideMap, DE::UnSerializeWStringMap(DE::SerializeWStringMap(wideMap)));
  EXPECT_TRUE(DE::UnSerializeStringVector("").empty());
  EXPECT_TRUE(DE::UnSerializeWStringMap("").empty());
}

TEST(RecordFormat, Items) {
  DE::SimpleFileItem fresh;
  EXPECT_FALSE(fresh.Flag);
  EXPECT_TRUE(fresh.Path.empty() && fresh.Name.empty());
  EXPECT_EQ(0, fresh.Value64);
  for (unsigned int v : fresh.Values) EXPECT_EQ(0u, v);

  DE::SimpleFileItem a;
  a.Flag = true;
  a.Path = L"C:\\Program Files\\\u00c4\\";
  a.Name = L"\U0001F600.txt";
  a.Value64 = -5;
  for (unsigned int i = 0; i < 10; ++i) a.Values[i] = 1000 + i;
  EXPECT_EQ(L"C:\\Program Files\\\u00c4\\\U0001F600.txt", a.FullPathName());
  DE::SimpleFileItem b;
  b.Assign(a);
  EXPECT_TRUE(b.Flag);
  EXPECT_EQ(a.Path, b.Path);
  EXPECT_EQ(a.Name, b.Name);
  EXPECT_EQ(-5, b.Value64);
  for (unsigned int i = 0; i < 10; ++i) EXPECT_EQ(1000 + i, b.Values[i]);

  // Any non-zero Flag reads as true.
  std::string record = Bytes({0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  record += std::string(40, '\0');
  DE::MemoryrStream flagStream = StreamOf(record);
  flagStream.Seek(0, DE::Begin);
  DE::SimpleFileItem flagged;
  flagged.LoadFromStream(flagStream);
  EXPECT_TRUE(flagged.Flag);
  EXPECT_EQ(flagStream.Size(), flagStream.Position());

  // A list: count, then the items; the caller frees them.
  DE::MemoryrStream list;
  DE::StreamWriter(list).WriteUInt32(2);
  a.SaveToStream(list);
  fresh.SaveToStream(list);
  list.Seek(0, DE::Begin);
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, list);
  ASSERT_EQ(2u, items.size());
  ASSERT_NE(nullptr, items[0]);
  EXPECT_EQ(a.Name, items[0]->Name);
  EXPECT_FALSE(items[1]->Flag);
  DE::SimpleFileItem::ClearItemList(items);
  EXPECT_TRUE(items.empty());

  std::vector<DE::BaseItem*> bases{new DE::SimpleFileItem, nullptr, new DE::SimpleFileItem};
  DE::BaseItem::ClearItemList(bases);
  EXPECT_TRUE(bases.empty());
}

}  // namespace
