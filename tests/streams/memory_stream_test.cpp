// MemoryrStream and Stream's block copies: growth steps and their 32-bit rounding, fixed
// buffers, terminators, comparisons, UTF-16 view, copies between streams.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "DEStream.h"
#include "common/temp_dir.h"

namespace {

// A stream over a string that records every transfer, to see how copies move their data.
class RecordingStream : public DE::Stream {
 public:
  explicit RecordingStream(std::string data = std::string()) : data_(std::move(data)) {}

  unsigned int Read(void* buf, unsigned int count) override {
    reads.push_back(count);
    if (position_ >= data_.size()) return 0;
    const std::size_t n = std::min<std::size_t>(count, data_.size() - position_);
    std::memcpy(buf, data_.data() + position_, n);
    position_ += n;
    return static_cast<unsigned int>(n);
  }
  unsigned int Write(const void* buf, unsigned int count) override {
    writes.push_back(count);
    data_.append(static_cast<const char*>(buf), count);
    return count;
  }
  long long Seek(long long offset, DE::SeekOrigin origin) override {
    seeks.push_back(origin);
    const long long base = origin == DE::Begin     ? 0
                           : origin == DE::Current ? static_cast<long long>(position_)
                                                   : static_cast<long long>(data_.size());
    position_ = static_cast<std::size_t>(base + offset);
    return base + offset;
  }
  void SetSize(long long) override {}

  const std::string& Data() const { return data_; }
  std::vector<unsigned int> reads, writes;
  std::vector<int> seeks;

 private:
  std::string data_;
  std::size_t position_ = 0;
};

std::string Pattern(std::size_t n) {
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) bytes[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
  return bytes;
}

TEST(MemoryStream, GrowsInSteps) {
  DE::MemoryrStream s;
  EXPECT_EQ(nullptr, s.Memory());
  EXPECT_EQ(1u, s.Write("x", 1));
  EXPECT_EQ(8192, s.GetCapacity());
  EXPECT_EQ(1, s.Size());
  s.SetSize(100);
  EXPECT_EQ(8192, s.GetCapacity());
  EXPECT_EQ(100, s.Size());
  s.SetCapacity(8193);
  EXPECT_EQ(16384, s.GetCapacity());
  // A request equal to the current size is taken as it is, not rounded.
  s.SetSize(100);
  EXPECT_EQ(100, s.GetCapacity());
  EXPECT_EQ(100, s.Size());
  EXPECT_EQ('x', s.Memory()[0]);

  // Writing one byte past a full step moves to the next step; the data survives each move.
  DE::MemoryrStream t;
  const std::string block = Pattern(8192);
  t.Write(block.data(), 8192);
  EXPECT_EQ(8192, t.GetCapacity());
  t.Write("y", 1);
  EXPECT_EQ(16384, t.GetCapacity());
  EXPECT_EQ(block + "y", t.ToString());

  // The rounding mask is 32 bits wide: 2^32 + 1 rounds to 8192.
  DE::MemoryrStream u;
  u.SetCapacity(0x100000001LL);
  EXPECT_EQ(8192, u.GetCapacity());

  DE::MemoryrStream sized(100ull);
  EXPECT_EQ(100, sized.Size());
  EXPECT_EQ(0, sized.Position());
  EXPECT_EQ(8192, sized.GetCapacity());
  EXPECT_EQ(std::string(100, '\0'), sized.ToString());

  // Bytes gained by SetSize read as zeros, also where older data once stood.
  DE::MemoryrStream regrown("abcdef");
  regrown.SetSize(2);
  regrown.SetSize(5);
  EXPECT_EQ(std::string("ab\0\0\0", 5), regrown.ToString());
}

TEST(MemoryStream, SeekReadWriteBounds) {
  DE::MemoryrStream s("hello");
  EXPECT_EQ(5, s.Position());
  EXPECT_EQ(5, s.Seek(0, DE::End));
  char buf[16] = {};
  EXPECT_EQ(0u, s.Read(buf, sizeof buf));
  EXPECT_EQ(105, s.Seek(100, DE::Current));  // past the end is allowed
  EXPECT_EQ(0u, s.Read(buf, sizeof buf));
  EXPECT_EQ(-3, s.Seek(-3, DE::Begin));
  EXPECT_EQ(0u, s.Read(buf, sizeof buf));
  EXPECT_EQ(0u, s.Write("a", 1));
  EXPECT_EQ(2, s.Seek(-3, DE::End));
  EXPECT_EQ(2, s.Seek(7, static_cast<DE::SeekOrigin>(9)));  // an unknown origin moves nothing
  EXPECT_EQ(3u, s.Read(buf, sizeof buf));
  EXPECT_EQ("llo", std::string(buf, 3));
  EXPECT_EQ(0u, s.Read(nullptr, 4));
  EXPECT_EQ(0u, s.Write(nullptr, 4));
  EXPECT_EQ(0u, s.Write("a", 0));

  // Writing past the end leaves a gap of zeros and moves the size.
  DE::MemoryrStream gap;
  gap.Seek(10, DE::Begin);
  EXPECT_EQ(2u, gap.Write("ab", 2));
  EXPECT_EQ(12, gap.Size());
  EXPECT_EQ(std::string(10, '\0') + "ab", gap.ToString());

  // A position whose 32-bit end wraps to 0 writes nothing.
  DE::MemoryrStream wrap;
  wrap.Seek(0xFFFFFFFFLL, DE::Begin);
  EXPECT_EQ(0u, wrap.Write("a", 1));
  EXPECT_EQ(0, wrap.Size());
  EXPECT_EQ(nullptr, wrap.Memory());

  // SetSize below the position moves the position to the new end.
  DE::MemoryrStream shrink("abcdef");
  shrink.SetSize(2);
  EXPECT_EQ(2, shrink.Position());
  EXPECT_EQ("ab", shrink.ToString());
  // The base SetSize keeps the low 32 bits only.
  shrink.Stream::SetSize(0x100000005LL);
  EXPECT_EQ(5, shrink.Size());
  shrink.SetPosition(1);
  EXPECT_EQ(1, shrink.Position());
  EXPECT_EQ(5, shrink.Size());
  EXPECT_EQ(1, shrink.Position());  // Size() puts the position back
}

TEST(MemoryStream, FixedBuffers) {
  char data[8] = {'a', 'b', 'c', 'd', 'S', 'S', 'S', 'S'};
  {
    DE::MemoryrStream attached(data, 4, true);
    EXPECT_EQ(data, attached.Memory());
    EXPECT_EQ(4, attached.Size());
    EXPECT_EQ(4, attached.GetCapacity());
    EXPECT_EQ(0, attached.Position());
    EXPECT_EQ(2u, attached.Write("xy", 2));
    // A full fixed buffer gets no terminator: the byte after it is not the stream's.
    EXPECT_EQ(data, attached.c_str());
    EXPECT_EQ('S', data[4]);
    attached.SetCapacity(100000);  // fixed streams never reallocate
    EXPECT_EQ(data, attached.Memory());
    EXPECT_EQ(4, attached.GetCapacity());
    attached.Clear();
    EXPECT_EQ(data, attached.Memory());
    EXPECT_EQ(0, attached.Size());
    EXPECT_STREQ("", attached.c_str());  // size 0 < 4: terminated at 0 and 1
  }
  // The caller's buffer is still there and holds what was written.
  EXPECT_EQ(std::string("\0\0cdSSSS", 8), std::string(data, 8));

  // A copy is fixed too: it does not grow and is not released with the stream.
  static char* keptCopy = nullptr;  // reachable, so leak checkers see the kept block as intended
  {
    char source[3] = {'1', '2', '3'};
    DE::MemoryrStream copied(source, 3, false);
    EXPECT_NE(source, copied.Memory());
    EXPECT_EQ("123", copied.ToString());
    EXPECT_EQ(3, copied.GetCapacity());
    keptCopy = copied.Memory();
  }
  EXPECT_EQ('1', keptCopy[0]);

  DE::MemoryrStream none(nullptr, 4, true);
  EXPECT_EQ(nullptr, none.Memory());
  EXPECT_EQ(1u, none.Write("z", 1));  // an empty growable stream
  EXPECT_EQ(8192, none.GetCapacity());
}

TEST(MemoryStream, TerminatorsAndComparisons) {
  DE::MemoryrStream fresh;
  ASSERT_NE(nullptr, fresh.c_str());
  EXPECT_STREQ("", fresh.c_str());
  EXPECT_EQ(0, fresh.Compare(""));
  EXPECT_EQ(-1, fresh.Compare("a"));
  EXPECT_EQ(-1, fresh.Compare(nullptr));
  EXPECT_EQ("", fresh.ToString());
  EXPECT_EQ(L"", fresh.ToWString());

  DE::MemoryrStream s("abcd");
  EXPECT_EQ(1, s.Compare(""));
  EXPECT_EQ(-1, s.Compare(nullptr));
  EXPECT_EQ(0, s.Compare("abcd"));
  EXPECT_EQ(1, s.Compare("abc"));  // 'd' against the terminator
  EXPECT_EQ(-1, s.Compare("abcde"));
  EXPECT_EQ(-1, s.Compare("abce"));
  EXPECT_EQ(0, s.CompareNoCase("ABcD"));
  EXPECT_EQ(1, s.CompareNoCase("ABC"));
  EXPECT_EQ(1, s.Compare("ABCD"));
  // Cut to 3 bytes, the old 4th byte still sits after the data and takes part ...
  s.SetSize(3);
  EXPECT_EQ(1, s.Compare("abc"));
  // ... until c_str() terminates the text.
  EXPECT_STREQ("abc", s.c_str());
  EXPECT_EQ(0, s.Compare("abc"));

  DE::MemoryrStream same("abc");
  DE::MemoryrStream longer("abcd");
  DE::MemoryrStream empty;
  EXPECT_EQ(0, s.Compare(same));
  EXPECT_EQ(-1, s.Compare(longer));
  EXPECT_EQ(1, longer.Compare(s));
  EXPECT_EQ(1, s.Compare(empty));
  EXPECT_EQ(-1, empty.Compare(s));
  EXPECT_EQ(0, empty.Compare(empty));

  // Bytes beyond a fixed buffer are never read: they compare as 0.
  char fixed[3] = {'a', 'b', 'c'};
  DE::MemoryrStream view(fixed, 3, true);
  EXPECT_EQ(0, view.Compare("abc"));
  EXPECT_EQ(-1, view.Compare("abcd"));
}

TEST(MemoryStream, WideView) {
  char ab[] = {0x41, 0x00, 0x42, 0x00};
  EXPECT_EQ(L"AB", DE::MemoryrStream(ab, 4).ToWString());
  // An odd size takes the byte after the data, here a fresh (zero) byte.
  EXPECT_EQ(L"AB", DE::MemoryrStream(ab, 3).ToWString());
  // A surrogate pair in memory order is one character on both platforms.
  char smile[] = {0x3D, static_cast<char>(0xD8), 0x00, static_cast<char>(0xDE)};
  EXPECT_EQ(std::wstring(L"\U0001F600"), DE::MemoryrStream(smile, 4).ToWString());
  // A fixed buffer of odd size: the missing high byte is 0, not whatever follows the buffer.
  char odd[4] = {0x43, 0x00, 0x44, 0x7F};
  EXPECT_EQ(L"CD", DE::MemoryrStream(odd, 3, true).ToWString());
}

TEST(MemoryStream, AssignAppendAndCopies) {
  DE::MemoryrStream s;
  s.Assign('x', 3);
  EXPECT_EQ("xxx", s.ToString());
  EXPECT_EQ(3, s.Position());
  s.Append('y', 2);
  EXPECT_EQ("xxxyy", s.ToString());
  EXPECT_EQ(5, s.Position());
  s.Seek(0, DE::Begin);
  s.Append("zz");
  EXPECT_EQ("xxxyyzz", s.ToString());
  s.Append("qq", 1);
  s.Append(nullptr);
  s.Append("", 0);
  s.Append('w', 0);
  EXPECT_EQ("xxxyyzzq", s.ToString());

  DE::MemoryrStream other("12");
  s.Append(other);
  EXPECT_EQ("xxxyyzzq12", s.ToString());
  s.Assign(other);
  EXPECT_EQ("12", s.ToString());
  s.Assign("abc", 2);
  EXPECT_EQ("ab", s.ToString());
  s.Assign("text");
  EXPECT_EQ("text", s.ToString());
  s.Assign('c', 0);
  EXPECT_EQ(0, s.Size());
  // Assigning a stream to itself empties it (the buffer is released before the copy).
  DE::MemoryrStream self("keep?");
  self.Assign(self);
  EXPECT_EQ(0, self.Size());

  DE::MemoryrStream copy(other);
  EXPECT_EQ("12", copy.ToString());
  EXPECT_NE(other.Memory(), copy.Memory());
  DE::MemoryrStream partial("abcdef", 3);
  EXPECT_EQ("abc", partial.ToString());
  EXPECT_EQ(3, partial.Position());

  DE::MemoryrStream target;
  other.SaveToStream(target);
  EXPECT_EQ("12", target.ToString());
  target.Write("3", 1);
  DE::MemoryrStream loaded("old contents");
  loaded.LoadFromStream(target);
  EXPECT_EQ("123", loaded.ToString());
}

TEST(StreamCopy, BlocksAndCounts) {
  const std::string data = Pattern(100000);
  RecordingStream source(data);
  source.Seek(500, DE::Begin);
  DE::MemoryrStream target;
  // Count 0: the whole source from its start, in a 61440-byte block and the rest.
  EXPECT_EQ(100000, target.CopyFrom(source, 0));
  EXPECT_EQ(data, target.ToString());
  EXPECT_EQ((std::vector<unsigned int>{61440, 38560}), source.reads);

  // A count the source cannot fill: the count asked for comes back, and as many bytes are
  // written (the missing ones from the zeroed copy buffer).
  RecordingStream shortSource("abcdefghij");
  shortSource.Seek(6, DE::Begin);
  DE::MemoryrStream shortTarget;
  EXPECT_EQ(50, shortTarget.CopyFrom(shortSource, 50));
  EXPECT_EQ(std::string("ghij") + std::string(46, '\0'), shortTarget.ToString());
  EXPECT_EQ(0, shortTarget.CopyFrom(shortSource, -5));

  // CopyTo is the same with this stream as the source.
  DE::MemoryrStream from(data.data(), static_cast<int>(data.size()));
  RecordingStream to;
  from.Seek(99990, DE::Begin);
  EXPECT_EQ(10, from.CopyTo(to, 10));
  EXPECT_EQ(data.substr(99990), to.Data());
  EXPECT_EQ(100000, from.CopyTo(to, 0));
  EXPECT_EQ((std::vector<unsigned int>{10, 61440, 38560}), to.writes);

  // Standard streams.
  std::istringstream in(data);
  DE::MemoryrStream fromStd;
  EXPECT_EQ(100000, fromStd.CopyFrom(in));
  EXPECT_EQ(data, fromStd.ToString());
  std::istringstream nothing("");
  EXPECT_EQ(0, fromStd.CopyFrom(nothing));
  fromStd.Seek(1000, DE::Begin);
  std::ostringstream out;
  EXPECT_EQ(99000, fromStd.CopyTo(out));
  EXPECT_EQ(data.substr(1000), out.str());
}

TEST(MemoryStream, FilesRoundTrip) {
  test::TempDir dir;
  const std::string path = dir.File("saved.bin").string();
  const std::string data = Pattern(70000);
  DE::MemoryrStream s(data.data(), static_cast<int>(data.size()));
  s.SaveToFile(path);
  EXPECT_EQ(data, test::ReadFileBytes(path));

  DE::MemoryrStream small("xy");
  small.SaveToFile(path);  // the file is created anew, not overwritten in place
  EXPECT_EQ("xy", test::ReadFileBytes(path));

  DE::MemoryrStream loaded("previous");
  loaded.LoadFromFile(path);
  EXPECT_EQ("xy", loaded.ToString());
  loaded.LoadFromFile(dir.File("missing.bin").wstring());
  EXPECT_EQ(0, loaded.Size());
}

}  // namespace
