// Digests of buffers and strings against the FIPS 180-4 example vectors, and the digest classes'
// life cycle.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "DEHash.h"
#include "hash/hash_test_util.h"

namespace {

struct Vector {
  const char* message;
  const char* sha1;
  const char* sha256;
};

const Vector kVectors[] = {
    {"abc", "A9993E364706816ABA3E25717850C26C9CD0D89D",
     "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983E441C3BD26EBAAE4AA1F95129E5E54670F1",
     "248D6A61D20638B8E5C026930C3E6039A33CE45964FF2167F6ECEDD419DB06C1"},
    {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrs"
     "t"
     "nopqrstu",
     "A49B2446A02C645BF419F995B67091253A04A259",
     "CF5B16A778AF8380036CE59E7B0492370B249B11E8F07A51AFAC45037AFEE9D1"},
};

TEST(HashVectors, BufferAndStringFormsGiveTheFipsDigests) {
  for (const Vector& v : kVectors) {
    SCOPED_TRACE(v.message);
    const std::string message = v.message;
    EXPECT_EQ(v.sha1, DE::GetStringSha1Hex(message));
    EXPECT_EQ(v.sha256, DE::GetStringSha256Hex(message));
    EXPECT_EQ(v.sha1, DE::GetBufferSha1Hex(message.data(), static_cast<unsigned long>(message.size())));
    EXPECT_EQ(v.sha256, DE::GetBufferSha256Hex(message.data(), static_cast<unsigned long>(message.size())));
    // Raw forms: the digest bytes themselves.
    EXPECT_EQ(v.sha1, hashtest::Hex(DE::GetStringSha1(message)));
    EXPECT_EQ(v.sha256, hashtest::Hex(DE::GetStringSha256(message)));
    EXPECT_EQ(v.sha1,
              hashtest::Hex(DE::GetBufferSha1(message.data(), static_cast<unsigned long>(message.size()))));
    EXPECT_EQ(v.sha256,
              hashtest::Hex(DE::GetBufferSha256(message.data(), static_cast<unsigned long>(message.size()))));
  }
}

// One million "a" fed in uneven pieces, through both Update forms.
TEST(HashVectors, MillionAInPieces) {
  const std::string a(1000000, 'a');
  const std::size_t pieces[] = {1, 63, 64, 65, 999, 8191, 8192, 8193, 100000};
  DE::CryptSHA1 sha1;
  DE::CryptSHA256 sha256;
  sha1.Init();
  sha256.Init();
  std::size_t at = 0;
  for (std::size_t i = 0; at < a.size(); ++i) {
    const std::size_t n = std::min(pieces[i % (sizeof(pieces) / sizeof(pieces[0]))], a.size() - at);
    sha1.Update(a.data() + at, static_cast<long long>(n));
    sha256.Update(a.substr(at, n));
    at += n;
  }
  EXPECT_EQ("34AA973CD4C4DAA4F61EEB2BDBAD27316534016F", hashtest::Final(sha1));
  EXPECT_EQ("CDC76E5C9914FB9281A1C7E284D73E67F1809A48A497200E046D39CCC7112CD0", hashtest::Final(sha256));
}

TEST(HashVectors, EmptyInputGivesEmptyTextNotTheEmptyDigest) {
  EXPECT_EQ("", DE::GetStringSha1(""));
  EXPECT_EQ("", DE::GetStringSha256(""));
  EXPECT_EQ("", DE::GetStringSha1Hex(""));
  EXPECT_EQ("", DE::GetStringSha256Hex(""));
  EXPECT_EQ("", DE::GetBufferSha1(nullptr, 3));
  EXPECT_EQ("", DE::GetBufferSha256(nullptr, 3));
  EXPECT_EQ("", DE::GetBufferSha1Hex("abc", 0));
  EXPECT_EQ("", DE::GetBufferSha256Hex("abc", 0));
  EXPECT_EQ("", DE::GetBufferSha1Hex(nullptr, 0));
  // The rule belongs to the one-call forms: the classes do give the digest of no data.
  DE::CryptSHA1 sha1;
  DE::CryptSHA256 sha256;
  sha1.Init();
  sha256.Init();
  EXPECT_EQ("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709", hashtest::Final(sha1));
  EXPECT_EQ("E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855", hashtest::Final(sha256));
}

TEST(HashVectors, BytesAreHashedVerbatim) {
  // Embedded NULs and high bytes count like any other byte (digests from Python's hashlib).
  const std::string withNul("abc\0", 4);
  EXPECT_EQ("686483805AC47CA14E03514F7481A7973B401762", DE::GetStringSha1Hex(withNul));
  EXPECT_EQ("DC1114CD074914BD872CC1F9A23EC910EA2203BC79779AB2E17DA25782A624FC",
            DE::GetStringSha256Hex(withNul));
  const std::string high("\xFF\x00\x80\n\r", 5);
  EXPECT_EQ("729BDD70C17EE08B5C8D9DE97A6468211DBDE4C6", DE::GetBufferSha1Hex(high.data(), 5));
  EXPECT_EQ("E5A7BF5303B91012AD351DD6F4F72A34FED867AC54F08CFF5553AEDCB9B32698",
            DE::GetBufferSha256Hex(high.data(), 5));
}

TEST(CryptBase, LifeCycle) {
  DE::CryptSHA1 sha1;
  DE::CryptSHA256 sha256;
  EXPECT_EQ(20u, sha1.DigestLen());
  EXPECT_EQ(32u, sha256.DigestLen());

  // Closed: Update and Final do nothing, the output stays as it was.
  unsigned char out[32];
  std::memset(out, 0xAB, sizeof(out));
  sha1.Update("xyz", 3);
  sha1.Final(out);
  EXPECT_EQ(std::string(32, '\xAB'), std::string(reinterpret_cast<char*>(out), sizeof(out)));

  // Bytes given before Init are not part of the digest; a second Init keeps what was added.
  sha1.Init();
  sha1.Update("ab", 2);
  sha1.Init();
  sha1.Update(nullptr, 5);
  sha1.Update("zzz", -1);
  sha1.Update(std::string("c"));
  sha1.Final(nullptr);
  const std::string abc = "A9993E364706816ABA3E25717850C26C9CD0D89D";
  EXPECT_EQ(abc, hashtest::Final(sha1));
  // Finished: more data is ignored and the value is given again.
  sha1.Update("more", 4);
  EXPECT_EQ(abc, hashtest::Final(sha1));
  // Reset and Init start afresh.
  sha1.Reset();
  sha1.Init();
  sha1.Update("abc", 3);
  EXPECT_EQ(abc, hashtest::Final(sha1));
  sha1.Reset();
  sha1.Reset();
  std::memset(out, 0xAB, sizeof(out));
  sha1.Final(out);
  EXPECT_EQ(std::string(32, '\xAB'), std::string(reinterpret_cast<char*>(out), sizeof(out)));
}

TEST(CryptBase, AlgorithmIdsOfTheProvider) {
  // MD5 (CryptoAPI id 32771) is served by the same providers; RFC 1321's "abc" vector.
  DE::CryptBase md5(32771, 16);
  md5.Init();
  md5.Update("abc", 3);
  EXPECT_EQ("900150983CD24FB0D6963F7D28E17F72", hashtest::Final(md5));

  // An id no provider knows leaves the object closed: Final writes nothing.
  DE::CryptBase unknown(0x1234, 20);
  unknown.Init();
  unknown.Update("abc", 3);
  unsigned char out[20];
  std::memset(out, 0x5A, sizeof(out));
  unknown.Final(out);
  EXPECT_EQ(std::string(20, '\x5A'), std::string(reinterpret_cast<char*>(out), sizeof(out)));

  // A digest length shorter than the digest: nothing is written rather than a cut value.
  DE::CryptBase shortSha256(32780, 20);
  shortSha256.Init();
  shortSha256.Update("abc", 3);
  std::memset(out, 0x5A, sizeof(out));
  shortSha256.Final(out);
  EXPECT_EQ(std::string(20, '\x5A'), std::string(reinterpret_cast<char*>(out), sizeof(out)));
}

}  // namespace
