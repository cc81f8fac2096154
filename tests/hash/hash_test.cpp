// Digests against the FIPS 180-4 vectors and the digests sha1sum/sha256sum give, the digest classes'
// life cycle, the stream block-reading rules, unopenable files and a file in use by another process.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "DEHash.h"
#include "DEStream.h"
#include "DEString.h"
#include "common/child_process.h"
#include "common/temp_dir.h"

namespace {

const char kAbcSha1[] = "A9993E364706816ABA3E25717850C26C9CD0D89D";
const char kAbcSha256[] = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";
const char kEmptySha1[] = "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709";
const char kEmptySha256[] = "E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855";

// Upper-case hex of raw bytes, written here so raw digests are checked without the library.
std::string Hex(const std::string& bytes) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : bytes) out += std::string{kDigits[c >> 4], kDigits[c & 15]};
  return out;
}

std::string Final(DE::CryptBase& crypt) {
  std::string out(crypt.DigestLen(), '\0');
  crypt.Final(reinterpret_cast<unsigned char*>(&out[0]));
  return Hex(out);
}

// Final on a closed or failed object: true when it left all of the output buffer untouched.
bool FinalWritesNothing(DE::CryptBase& crypt) {
  unsigned char out[32];
  std::memset(out, 0xAB, sizeof(out));
  crypt.Final(out);
  return std::string(reinterpret_cast<char*>(out), sizeof(out)) == std::string(32, '\xAB');
}

// The test files' content: a 65521-byte pattern (a prime length, so it never lines up with the
// 8192-byte blocks) repeated. The digests below were made with sha1sum and sha256sum over it.
std::string PatternBytes(std::uint64_t size) {
  std::string bytes(static_cast<std::size_t>(size), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint32_t j = static_cast<std::uint32_t>(i % 65521);
    bytes[i] = static_cast<char>((j * 2654435761u) >> 24);
  }
  return bytes;
}

// A stream over a copy of `bytes`, positioned at its start.
struct BytesStream {
  explicit BytesStream(const std::string& b)
      : bytes(b), stream(&bytes[0], static_cast<int>(bytes.size()), true) {}
  std::string bytes;
  DE::MemoryrStream stream;
};

// The FIPS 180-4 vectors, then a NUL and high bytes (digests from Python's hashlib).
TEST(HashVectors, VectorsThroughEveryBufferAndStringForm) {
  const struct {
    std::string message;
    const char *sha1, *sha256;
  } vectors[] = {
      {"abc", kAbcSha1, kAbcSha256},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983E441C3BD26EBAAE4AA1F95129E5E54670F1",
       "248D6A61D20638B8E5C026930C3E6039A33CE45964FF2167F6ECEDD419DB06C1"},
      {std::string("\xFF\x00\x80\n\r", 5), "729BDD70C17EE08B5C8D9DE97A6468211DBDE4C6",
       "E5A7BF5303B91012AD351DD6F4F72A34FED867AC54F08CFF5553AEDCB9B32698"},
  };
  for (const auto& v : vectors) {
    SCOPED_TRACE(v.sha1);
    const std::string& m = v.message;
    const unsigned long n = static_cast<unsigned long>(m.size());
    EXPECT_EQ(v.sha1, DE::GetStringSha1Hex(m));
    EXPECT_EQ(v.sha256, DE::GetStringSha256Hex(m));
    EXPECT_EQ(v.sha1, DE::GetBufferSha1Hex(m.data(), n));
    EXPECT_EQ(v.sha256, DE::GetBufferSha256Hex(m.data(), n));
    EXPECT_EQ(v.sha1, Hex(DE::GetStringSha1(m)));
    EXPECT_EQ(v.sha256, Hex(DE::GetStringSha256(m)));
    EXPECT_EQ(v.sha1, Hex(DE::GetBufferSha1(m.data(), n)));
    EXPECT_EQ(v.sha256, Hex(DE::GetBufferSha256(m.data(), n)));
  }
  // Only the one-call forms give "" for no data; streams and files of none give the empty digest.
  EXPECT_EQ("", DE::GetStringSha256Hex(""));
  EXPECT_EQ("", DE::GetBufferSha256(nullptr, 3));
  EXPECT_EQ("", DE::GetBufferSha1Hex("abc", 0));
}

// One million "a" fed in uneven pieces, through both Update forms.
TEST(HashVectors, MillionAInPieces) {
  const std::string a(1000000, 'a');
  const std::size_t pieces[] = {1, 63, 64, 65, 999, 8191, 8192, 8193, 100000};
  DE::CryptSHA1 sha1;
  DE::CryptSHA256 sha256;
  sha1.Init();
  sha256.Init();
  for (std::size_t i = 0, at = 0; at < a.size(); ++i) {
    const std::size_t n = std::min(pieces[i % 9], a.size() - at);
    sha1.Update(a.data() + at, static_cast<long long>(n));
    sha256.Update(a.substr(at, n));
    at += n;
  }
  EXPECT_EQ("34AA973CD4C4DAA4F61EEB2BDBAD27316534016F", Final(sha1));
  EXPECT_EQ("CDC76E5C9914FB9281A1C7E284D73E67F1809A48A497200E046D39CCC7112CD0", Final(sha256));
}

TEST(CryptBase, LifeCycle) {
  DE::CryptSHA1 sha1;
  // Closed: Update and Final do nothing.
  sha1.Update("xyz", 3);
  EXPECT_TRUE(FinalWritesNothing(sha1));
  // A second Init keeps what was added; null and negative-length data are ignored.
  sha1.Init();
  sha1.Update("ab", 2);
  sha1.Init();
  sha1.Update(nullptr, 5);
  sha1.Update("zzz", -1);
  sha1.Update(std::string("c"));
  sha1.Final(nullptr);
  EXPECT_EQ(kAbcSha1, Final(sha1));
  // Finished: more data is ignored and the value is given again.
  sha1.Update("more", 4);
  EXPECT_EQ(kAbcSha1, Final(sha1));
  // Reset closes the object (twice is harmless); Init starts afresh.
  sha1.Reset();
  sha1.Reset();
  EXPECT_TRUE(FinalWritesNothing(sha1));
  sha1.Init();
  sha1.Update("abc", 3);
  EXPECT_EQ(kAbcSha1, Final(sha1));
}

TEST(CryptBase, AlgorithmIdsOfTheProvider) {
  // MD5 (CryptoAPI id 32771) is served by the same providers; RFC 1321's "abc" vector.
  DE::CryptBase md5(32771, 16);
  md5.Init();
  md5.Update("abc", 3);
  EXPECT_EQ("900150983CD24FB0D6963F7D28E17F72", Final(md5));
  // An id no provider knows, or a length shorter than the digest: nothing is written.
  DE::CryptBase unknown(0x1234, 20), shortSha256(32780, 20);
  for (DE::CryptBase* crypt : {&unknown, &shortSha256}) {
    crypt->Init();
    crypt->Update("abc", 3);
    EXPECT_TRUE(FinalWritesNothing(*crypt));
  }
}

TEST(HashStream, CountsPositionAndShortReads) {
  BytesStream s("xxabcyy");
  EXPECT_EQ(kEmptySha1, DE::GetStreamSha1Hex(s.stream, 0));
  // A negative count reads nothing and gives a zero-filled digest, not "".
  EXPECT_EQ(std::string(64, '0'), DE::GetStreamSha256Hex(s.stream, -8193));
  EXPECT_EQ(0, s.stream.Position());
  // Reading starts at the current position and leaves the stream after what was read.
  s.stream.Seek(2, DE::Begin);
  EXPECT_EQ(kAbcSha256, Hex(DE::GetStreamSha256(s.stream, 3)));
  EXPECT_EQ(5, s.stream.Position());

  // Fewer bytes than asked: the rest of the zeroed buffer is hashed.
  BytesStream small("0123456789");
  EXPECT_EQ(DE::GetStringSha256Hex(std::string("0123456789") + std::string(10, '\0')),
            DE::GetStreamSha256Hex(small.stream, 20));
  // After a full block, a short read leaves the previous block's tail in the buffer.
  const std::string data = PatternBytes(8192 + 10);
  BytesStream two(data);
  EXPECT_EQ(DE::GetStringSha1Hex(data.substr(0, 8192) + data.substr(8192, 10) + data.substr(10, 8192 - 10)),
            DE::GetStreamSha1Hex(two.stream, 16384));
}

// Pattern files and their digests, made with sha1sum/sha256sum: both sides of the 8192-byte block.
const struct FileCase {
  std::uint64_t size;
  const char *sha1, *sha256;
} kFiles[] = {
    {0, kEmptySha1, kEmptySha256},
    {1, "5BA93C9DB0CFF93F52B521D7420E43F6EDA2784F",
     "6E340B9CFFB37A989CA544E6BB780A2C78901D3FB33738768511A30617AFA01D"},
    {8192, "F5FFEBA9F758D120E75BE259FC084B74F526201C",
     "D17BB25FF10882B5D967DA4173E6A84A19AED851543648BEA2387F744EBCD7FE"},
    {8193, "633C0AC0F3AC2D168F39561E6E9B39A0F919678E",
     "5CE579824AD61EF0726E1D1B4BB778E98E4352F895D1F7948B84A0E278E68A61"},
};

TEST(HashFile, SizesAgainstTheDigestTools) {
  test::TempDir dir;
  for (const FileCase& c : kFiles) {
    SCOPED_TRACE(c.size);
    const std::filesystem::path path = dir.File("f" + std::to_string(c.size) + ".bin");
    ASSERT_TRUE(test::WriteFileBytes(path, PatternBytes(c.size)));
    EXPECT_EQ(c.sha1, DE::GetFileSha1Hex(path.string()));
    EXPECT_EQ(c.sha256, Hex(DE::GetFileSha256(path.wstring())));
  }
}

TEST(HashFile, NonAsciiWidePathAndUnopenableFiles) {
  test::TempDir dir;
  const std::filesystem::path path =
      dir.Path() / std::filesystem::u8path("d\xC3\xA9j\xC3\xA0 \xE4\xB8\xAD.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "abc"));
  const std::wstring wide = DE::StringProc::StringToWStringByUTF8(path.u8string());
  EXPECT_EQ(kAbcSha256, DE::GetFileSha256Hex(wide));
  EXPECT_EQ(kAbcSha1, DE::GetFileSha1Hex(wide));
  // A missing file, a folder and an empty path give "".
  for (const std::filesystem::path& bad : {dir.File("missing.bin"), dir.Path(), std::filesystem::path()}) {
    EXPECT_EQ("", DE::GetFileSha1(bad.string())) << bad;
    EXPECT_EQ("", DE::GetFileSha256Hex(bad.wstring())) << bad;
  }
}

// Up to 30 seconds.
bool WaitForFile(const std::filesystem::path& path) {
  for (int i = 0; i < 3000 && !std::filesystem::exists(path); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return std::filesystem::exists(path);
}

// Child: opens args[0] for writing (others may read and write), announces it by creating
// args[1], and keeps the file open until args[2] appears.
TEST_CHILD_MAIN(hash_hold_for_writing) {
  DE::FileStream file(DE::StringProc::StringToWStringByUTF8(args.at(0)), 0x41);
  if (!file.IsOpened()) return 3;
  if (!test::WriteFileBytes(std::filesystem::u8path(args.at(1)), "ready")) return 4;
  return WaitForFile(std::filesystem::u8path(args.at(2))) ? 0 : 5;
}

TEST(HashFile, FileHeldOpenForWritingByAnotherProcess) {
  test::TempDir dir;
  const std::filesystem::path path = dir.File("busy.bin"), ready = dir.File("ready"),
                              release = dir.File("go");
  ASSERT_TRUE(test::WriteFileBytes(path, "abc"));
  test::ChildProcess child;
  ASSERT_TRUE(child.Start({"hash_hold_for_writing", path.u8string(), ready.u8string(), release.u8string()}));
  ASSERT_TRUE(WaitForFile(ready)) << "the child did not open the file";
  EXPECT_EQ("", DE::GetFileSha1(path.string()));
  EXPECT_EQ("", DE::GetFileSha256Hex(path.wstring()));
  ASSERT_TRUE(test::WriteFileBytes(release, "go"));
  EXPECT_EQ(0, child.Wait(30000));
  // Closed again: the same file hashes normally.
  EXPECT_EQ(kAbcSha1, DE::GetFileSha1Hex(path.string()));
}

}  // namespace
