// MemoryrStream and the block copies: growth and its 32-bit rounding, fixed buffers, terminators,
// comparisons, the UTF-16 view, copies between streams and to and from files.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "DEStream.h"
#include "common/temp_dir.h"

namespace {

// Records the size of every read, to see the blocks a copy moves.
class CountingStream : public DE::MemoryrStream {
 public:
  using MemoryrStream::MemoryrStream;
  unsigned int Read(void* buf, unsigned int count) override {
    reads.push_back(count);
    return MemoryrStream::Read(buf, count);
  }
  std::vector<unsigned int> reads;
};

std::string Pattern(std::size_t n) {
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) bytes[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
  return bytes;
}

TEST(MemoryStream, GrowsInSteps) {
  DE::MemoryrStream s;
  EXPECT_EQ(1u, s.Write("x", 1));
  EXPECT_EQ(8192, s.GetCapacity());
  s.SetSize(100);
  s.SetSize(100);  // equal to the size: taken as it is, not rounded
  EXPECT_EQ(100, s.GetCapacity());
  EXPECT_EQ('x', s.Memory()[0]);
  s.SetCapacity(0x100000001LL);  // the 32-bit rounding mask makes 2^32 + 1 into 8192
  EXPECT_EQ(8192, s.GetCapacity());

  // One byte past a full step moves to the next; the data survives the move.
  DE::MemoryrStream t;
  const std::string block = Pattern(8192);
  t.Write(block.data(), 8192);
  t.Write("y", 1);
  EXPECT_EQ(16384, t.GetCapacity());
  EXPECT_EQ(block + "y", t.ToString());

  // Bytes gained by SetSize read as zeros, also where older data stood; the base SetSize keeps
  // the low 32 bits only.
  DE::MemoryrStream regrown("abcdef");
  regrown.SetSize(2);
  EXPECT_EQ(2, regrown.Position());  // moved back to the new end
  regrown.Stream::SetSize(0x100000005LL);
  EXPECT_EQ(std::string("ab\0\0\0", 5), regrown.ToString());
}

TEST(MemoryStream, SeekReadWriteBounds) {
  DE::MemoryrStream s("hello");
  char buf[16] = {};
  EXPECT_EQ(105, s.Seek(100, DE::Current));  // past the end is allowed
  EXPECT_EQ(0u, s.Read(buf, sizeof buf));
  EXPECT_EQ(-3, s.Seek(-3, DE::Begin));
  EXPECT_EQ(0u, s.Read(buf, sizeof buf));
  EXPECT_EQ(0u, s.Write("a", 1));
  EXPECT_EQ(2, s.Seek(-3, DE::End));
  EXPECT_EQ(2, s.Seek(7, static_cast<DE::SeekOrigin>(9)));  // an unknown origin moves nothing
  EXPECT_EQ(3u, s.Read(buf, sizeof buf));
  EXPECT_EQ("llo", std::string(buf, 3));
  EXPECT_EQ(0u, s.Write(nullptr, 4));

  DE::MemoryrStream gap;  // writing past the end leaves zeros
  gap.Seek(10, DE::Begin);
  EXPECT_EQ(2u, gap.Write("ab", 2));
  EXPECT_EQ(std::string(10, '\0') + "ab", gap.ToString());

  DE::MemoryrStream wrap;  // a 32-bit end of 0 writes nothing
  wrap.Seek(0xFFFFFFFFLL, DE::Begin);
  EXPECT_EQ(0u, wrap.Write("a", 1));
  EXPECT_EQ(0, wrap.Size());
}

TEST(MemoryStream, FixedBuffers) {
  char data[8] = {'a', 'b', 'c', 'd', 'S', 'S', 'S', 'S'};
  {
    DE::MemoryrStream attached(data, 4, true);
    EXPECT_EQ(2u, attached.Write("xy", 2));
    // A full fixed buffer gets no terminator: the byte after it is not the stream's.
    EXPECT_EQ(data, attached.c_str());
    EXPECT_EQ('S', data[4]);
    attached.SetCapacity(100000);  // never reallocated
    EXPECT_EQ(4, attached.GetCapacity());
    attached.Clear();
    EXPECT_STREQ("", attached.c_str());  // size 0 < 4: terminated at 0 and 1
  }
  EXPECT_EQ(std::string("\0\0cdSSSS", 8), std::string(data, 8));  // still the caller's

  // A copy is fixed too, and not released with the stream.
  static char* keptCopy = nullptr;  // reachable, so leak checkers see the kept block as intended
  {
    char source[3] = {'1', '2', '3'};
    DE::MemoryrStream copied(source, 3, false);
    EXPECT_NE(source, copied.Memory());
    EXPECT_EQ(3, copied.GetCapacity());
    keptCopy = copied.Memory();
  }
  EXPECT_EQ('1', keptCopy[0]);

  DE::MemoryrStream none(nullptr, 4, true);
  EXPECT_EQ(1u, none.Write("z", 1));  // an empty growable stream
  EXPECT_EQ(8192, none.GetCapacity());
}

TEST(MemoryStream, TerminatorsComparisonsAndWideView) {
  DE::MemoryrStream empty;
  EXPECT_STREQ("", empty.c_str());
  EXPECT_EQ(0, empty.Compare(""));
  EXPECT_EQ(-1, empty.Compare("a"));
  EXPECT_EQ(-1, empty.Compare(nullptr));

  DE::MemoryrStream s("abcd");
  EXPECT_EQ(1, s.Compare(""));
  EXPECT_EQ(1, s.Compare("abc"));  // 'd' against the terminator
  EXPECT_EQ(-1, s.Compare("abce"));
  EXPECT_EQ(0, s.CompareNoCase("ABcD"));
  s.SetSize(3);  // the old 4th byte still follows the data and takes part ...
  EXPECT_EQ(1, s.Compare("abc"));
  EXPECT_STREQ("abc", s.c_str());  // ... until c_str() terminates the text
  EXPECT_EQ(0, s.Compare("abc"));
  DE::MemoryrStream longer("abcd");
  EXPECT_EQ(-1, s.Compare(longer));

  char fixed[3] = {'a', 'b', 'c'};  // bytes beyond a fixed buffer are never read: they compare as 0
  DE::MemoryrStream view(fixed, 3, true);
  EXPECT_EQ(0, view.Compare("abc"));
  EXPECT_EQ(-1, view.Compare("abcd"));

  char ab[] = {0x41, 0x00, 0x42, 0x00};
  EXPECT_EQ(L"AB", DE::MemoryrStream(ab, 4).ToWString());
  EXPECT_EQ(L"AB", DE::MemoryrStream(ab, 3).ToWString());  // an odd size takes a fresh zero byte
  // A surrogate pair in memory order is one character on both platforms.
  char smile[] = {0x3D, static_cast<char>(0xD8), 0x00, static_cast<char>(0xDE)};
  EXPECT_EQ(std::wstring(L"\U0001F600"), DE::MemoryrStream(smile, 4).ToWString());
  // Odd-sized fixed buffer: the missing high byte is 0, not whatever follows the buffer.
  char odd[4] = {0x43, 0x00, 0x44, 0x7F};
  EXPECT_EQ(L"CD", DE::MemoryrStream(odd, 3, true).ToWString());
}

TEST(MemoryStream, AssignAppendAndFiles) {
  DE::MemoryrStream s;
  s.Assign('x', 3);
  s.Seek(0, DE::Begin);
  s.Append("zz");  // at the end, whatever the position
  s.Append("qq", 1);
  s.Append(nullptr);
  EXPECT_EQ("xxxzzq", s.ToString());
  EXPECT_EQ(6, s.Position());
  s.Assign(s);  // to itself: empties it (the buffer is released before the copy)
  EXPECT_EQ(0, s.Size());

  DE::MemoryrStream other("12");
  DE::MemoryrStream copy(other);
  EXPECT_NE(other.Memory(), copy.Memory());
  DE::MemoryrStream partial("abcdef", 3);
  EXPECT_EQ("abc", partial.ToString());
  EXPECT_EQ(3, partial.Position());
  partial.LoadFromStream(other);  // replaces the contents
  EXPECT_EQ("12", partial.ToString());

  test::TempDir dir;
  const std::string path = dir.File("saved.bin").string();
  const std::string data = Pattern(70000);
  DE::MemoryrStream(data.data(), static_cast<int>(data.size())).SaveToFile(path);
  EXPECT_EQ(data, test::ReadFileBytes(path));
  DE::MemoryrStream("xy").SaveToFile(path);  // created anew, not overwritten in place
  EXPECT_EQ("xy", test::ReadFileBytes(path));
  DE::MemoryrStream loaded("previous");
  loaded.LoadFromFile(path);
  EXPECT_EQ("xy", loaded.ToString());
  loaded.LoadFromFile(dir.File("missing.bin").wstring());
  EXPECT_EQ(0, loaded.Size());
}

TEST(StreamCopy, BlocksAndCounts) {
  const std::string data = Pattern(100000);
  CountingStream source(data.data(), static_cast<int>(data.size()));
  DE::MemoryrStream target;
  // Count 0: the whole source from its start, in a 61440-byte block and the rest.
  EXPECT_EQ(100000, target.CopyFrom(source, 0));
  EXPECT_EQ(data, target.ToString());
  EXPECT_EQ((std::vector<unsigned int>{61440, 38560}), source.reads);

  // A count the source cannot fill: that count comes back and is written, the missing bytes
  // from the zeroed copy buffer.
  DE::MemoryrStream shortSource("abcdefghij");
  shortSource.Seek(6, DE::Begin);
  DE::MemoryrStream shortTarget;
  EXPECT_EQ(50, shortTarget.CopyFrom(shortSource, 50));
  EXPECT_EQ(std::string("ghij") + std::string(46, '\0'), shortTarget.ToString());
  EXPECT_EQ(0, shortTarget.CopyFrom(shortSource, -5));
  DE::MemoryrStream to;
  target.Seek(99990, DE::Begin);
  EXPECT_EQ(10, target.CopyTo(to, 10));
  EXPECT_EQ(data.substr(99990), to.ToString());

  std::istringstream in(data);
  DE::MemoryrStream fromStd;
  EXPECT_EQ(100000, fromStd.CopyFrom(in));
  fromStd.Seek(1000, DE::Begin);
  std::ostringstream out;
  EXPECT_EQ(99000, fromStd.CopyTo(out));
  EXPECT_EQ(data.substr(1000), out.str());
}

}  // namespace
