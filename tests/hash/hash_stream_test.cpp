// Digests of streams and files: the block reading rules, files of awkward sizes against the
// digests sha1sum and sha256sum give, unopenable files, and a file in use by another process.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "DEHash.h"
#include "DEStream.h"
#include "DEString.h"
#include "common/child_process.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"
#include "hash/hash_test_util.h"

namespace {

const char kEmptySha1[] = "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709";
const char kEmptySha256[] = "E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855";
const char kAbcSha1[] = "A9993E364706816ABA3E25717850C26C9CD0D89D";
const char kAbcSha256[] = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";

// Files of pattern bytes (hashtest::PatternBytes) and their digests, made with sha1sum/sha256sum.
struct FileCase {
  std::uint64_t size;
  const char* sha1;
  const char* sha256;
};

const FileCase kFiles[] = {
    {0, kEmptySha1, kEmptySha256},
    {1, "5BA93C9DB0CFF93F52B521D7420E43F6EDA2784F",
     "6E340B9CFFB37A989CA544E6BB780A2C78901D3FB33738768511A30617AFA01D"},
    {8191, "2F8E6DE838A849B000BF9A0AE5A8D69EF00210C4",
     "A3C1DA0CA9F5B72C50C8CD6932567B708F95E327155115F0452877331A6CC58D"},
    {8192, "F5FFEBA9F758D120E75BE259FC084B74F526201C",
     "D17BB25FF10882B5D967DA4173E6A84A19AED851543648BEA2387F744EBCD7FE"},
    {8193, "633C0AC0F3AC2D168F39561E6E9B39A0F919678E",
     "5CE579824AD61EF0726E1D1B4BB778E98E4352F895D1F7948B84A0E278E68A61"},
    {3 * 1048576 + 5, "D8DEF32B2D18CC39DF58BD4A00BCB1B2BDF3C09C",
     "A265FBBC58AD4F99A9717DC31A26B7073F22AFF85EB1418C62A46F2D78A49CC3"},
};

// A stream over a copy of `bytes`, positioned at its start.
class BytesStream {
 public:
  explicit BytesStream(const std::string& bytes)
      : bytes_(bytes), stream_(&bytes_[0], static_cast<int>(bytes_.size()), true) {}
  DE::MemoryrStream& Get() { return stream_; }

 private:
  std::string bytes_;
  DE::MemoryrStream stream_;
};

TEST(HashStream, CountZeroAndNegative) {
  BytesStream s("abc");
  EXPECT_EQ(kEmptySha256, hashtest::Hex(DE::GetStreamSha256(s.Get(), 0)));
  EXPECT_EQ(kEmptySha1, DE::GetStreamSha1Hex(s.Get(), 0));
  // A negative count reads nothing and gives a zero-filled digest, not "".
  EXPECT_EQ(std::string(32, '\0'), DE::GetStreamSha256(s.Get(), -1));
  EXPECT_EQ(std::string(20, '\0'), DE::GetStreamSha1(s.Get(), -8193));
  EXPECT_EQ(std::string(64, '0'), DE::GetStreamSha256Hex(s.Get(), -1));
  EXPECT_EQ(0, s.Get().Position());
  DE::CryptSHA1 sha1;
  sha1.Init();
  sha1.Update(s.Get(), -1);
  EXPECT_EQ(kEmptySha1, hashtest::Final(sha1));
}

TEST(HashStream, ReadsFromTheCurrentPosition) {
  BytesStream s("xxabcyy");
  s.Get().Seek(2, DE::Begin);
  EXPECT_EQ(kAbcSha1, DE::GetStreamSha1Hex(s.Get(), 3));
  EXPECT_EQ(5, s.Get().Position());
  s.Get().Seek(2, DE::Begin);
  EXPECT_EQ(kAbcSha256, hashtest::Hex(DE::GetStreamSha256(s.Get(), 3)));
}

TEST(HashStream, ShortStreamHashesWhatTheBlockBufferHolds) {
  // Fewer bytes than asked: the rest of the zeroed buffer is hashed.
  BytesStream small("0123456789");
  EXPECT_EQ(DE::GetStringSha256Hex(std::string("0123456789") + std::string(10, '\0')),
            DE::GetStreamSha256Hex(small.Get(), 20));

  // After a full block, a short read leaves the previous block's tail in the buffer.
  const std::string data = hashtest::PatternBytes(8192 + 10);
  const std::string second = data.substr(8192, 10) + data.substr(10, 8192 - 10);
  BytesStream two(data);
  EXPECT_EQ(DE::GetStringSha1Hex(data.substr(0, 8192) + second), DE::GetStreamSha1Hex(two.Get(), 16384));
  // A third block that reads nothing hashes the same buffer again.
  BytesStream three(data);
  EXPECT_EQ(DE::GetStringSha256Hex(data.substr(0, 8192) + second + second),
            DE::GetStreamSha256Hex(three.Get(), 3 * 8192));
  // A partial last block past the end of data: the stale bytes up to the count.
  BytesStream partial(data);
  EXPECT_EQ(DE::GetStringSha256Hex(data.substr(0, 8192) + second.substr(0, 100)),
            DE::GetStreamSha256Hex(partial.Get(), 8192 + 100));
}

TEST(HashStream, LargeStreamInBlocks) {
  const FileCase& big = kFiles[5];
  BytesStream s(hashtest::PatternBytes(big.size));
  EXPECT_EQ(big.sha1, DE::GetStreamSha1Hex(s.Get(), static_cast<long long>(big.size)));
  s.Get().Seek(0, DE::Begin);
  EXPECT_EQ(big.sha256, DE::GetStreamSha256Hex(s.Get(), static_cast<long long>(big.size)));
}

TEST(HashFile, SizesAgainstTheDigestTools) {
  test::TempDir dir;
  for (const FileCase& c : kFiles) {
    SCOPED_TRACE(c.size);
    const std::filesystem::path path = dir.File("f" + std::to_string(c.size) + ".bin");
    const std::string bytes = hashtest::PatternBytes(c.size);
    ASSERT_TRUE(test::WriteFileBytes(path, bytes));
    // The recorded digests came from the tools; on Linux they are asked again for this file.
    if (!test::IsWindowsBuild()) {
      EXPECT_EQ(c.sha1, hashtest::ToolDigest("sha1sum", path));
      EXPECT_EQ(c.sha256, hashtest::ToolDigest("sha256sum", path));
    }
    EXPECT_EQ(c.sha1, DE::GetFileSha1Hex(path.string()));
    EXPECT_EQ(c.sha1, DE::GetFileSha1Hex(path.wstring()));
    EXPECT_EQ(c.sha256, DE::GetFileSha256Hex(path.string()));
    EXPECT_EQ(c.sha256, DE::GetFileSha256Hex(path.wstring()));
    EXPECT_EQ(c.sha1, hashtest::Hex(DE::GetFileSha1(path.string())));
    EXPECT_EQ(c.sha256, hashtest::Hex(DE::GetFileSha256(path.wstring())));
    // The file form agrees with the buffer form over the same bytes (the empty buffer gives "").
    if (c.size > 0) {
      EXPECT_EQ(DE::GetBufferSha256(bytes.data(), static_cast<unsigned long>(bytes.size())),
                DE::GetFileSha256(path.string()));
      EXPECT_EQ(DE::GetStringSha1(bytes), DE::GetFileSha1(path.wstring()));
    }
  }
}

TEST(HashFile, NonAsciiWidePath) {
  test::TempDir dir;
  const std::string utf8Name = "d\xC3\xA9j\xC3\xA0 \xE4\xB8\xAD.bin";
  const std::filesystem::path path = dir.Path() / std::filesystem::u8path(utf8Name);
  ASSERT_TRUE(test::WriteFileBytes(path, "abc"));
  const std::wstring wide = DE::StringProc::StringToWStringByUTF8(path.u8string());
  EXPECT_EQ(kAbcSha256, DE::GetFileSha256Hex(wide));
  EXPECT_EQ(kAbcSha1, DE::GetFileSha1Hex(wide));
}

TEST(HashFile, UnopenableFileGivesEmptyText) {
  test::TempDir dir;
  const std::filesystem::path missing = dir.File("missing.bin");
  for (const std::filesystem::path& path : {missing, dir.Path()}) {
    SCOPED_TRACE(path.string());
    EXPECT_EQ("", DE::GetFileSha1(path.string()));
    EXPECT_EQ("", DE::GetFileSha1(path.wstring()));
    EXPECT_EQ("", DE::GetFileSha256(path.string()));
    EXPECT_EQ("", DE::GetFileSha256(path.wstring()));
    EXPECT_EQ("", DE::GetFileSha1Hex(path.string()));
    EXPECT_EQ("", DE::GetFileSha1Hex(path.wstring()));
    EXPECT_EQ("", DE::GetFileSha256Hex(path.string()));
    EXPECT_EQ("", DE::GetFileSha256Hex(path.wstring()));
  }
  EXPECT_EQ("", DE::GetFileSha256Hex(std::string()));
}

bool WaitForFile(const std::filesystem::path& path, int timeoutMs) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!std::filesystem::exists(path)) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// Child: opens args[0] for writing (others may read and write), announces it by creating
// args[1], and keeps the file open until args[2] appears.
TEST_CHILD_MAIN(hash_hold_for_writing) {
  const std::wstring path = DE::StringProc::StringToWStringByUTF8(args.at(0));
  DE::FileStream file(path, 0x41);
  if (!file.IsOpened()) return 3;
  if (!test::WriteFileBytes(std::filesystem::u8path(args.at(1)), "ready")) return 4;
  return WaitForFile(std::filesystem::u8path(args.at(2)), 30000) ? 0 : 5;
}

TEST(HashFile, FileHeldOpenForWritingByAnotherProcess) {
  test::TempDir dir;
  const std::filesystem::path path = dir.File("busy.bin");
  const std::filesystem::path ready = dir.File("ready");
  const std::filesystem::path release = dir.File("release");
  ASSERT_TRUE(test::WriteFileBytes(path, "abc"));

  test::ChildProcess child;
  ASSERT_TRUE(child.Start({"hash_hold_for_writing", path.u8string(), ready.u8string(), release.u8string()}));
  ASSERT_TRUE(WaitForFile(ready, 30000)) << "the child did not open the file";
  EXPECT_EQ("", DE::GetFileSha1(path.string()));
  EXPECT_EQ("", DE::GetFileSha256Hex(path.wstring()));
  ASSERT_TRUE(test::WriteFileBytes(release, "go"));
  EXPECT_EQ(0, child.Wait(30000));

  // Closed again: the same file hashes normally.
  EXPECT_EQ(kAbcSha1, DE::GetFileSha1Hex(path.string()));
}

// Several hundred megabytes through the 8192-byte buffer (its own CTest entry, labelled slow).
TEST(HashFileSlow, SeveralHundredMegabytes) {
  test::TempDir dir;
  const std::uint64_t size = 300ull * 1048576 + 7;
  const std::filesystem::path path = dir.File("big.bin");
  ASSERT_TRUE(hashtest::WritePatternFile(path, size));
  const char sha1[] = "262D3B0C2F2C8717B27B4E39A2660FC636D3F2FF";
  const char sha256[] = "8183C4355C7711287C790FB30EFBC703AADAEB1FBD8871AAA8A18887E138F790";
  if (!test::IsWindowsBuild()) {
    EXPECT_EQ(sha256, hashtest::ToolDigest("sha256sum", path));
  }
  EXPECT_EQ(sha256, DE::GetFileSha256Hex(path.wstring()));
  EXPECT_EQ(sha1, DE::GetFileSha1Hex(path.string()));
}

}  // namespace
