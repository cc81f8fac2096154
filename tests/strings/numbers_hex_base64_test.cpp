// Numbers from text (the Windows C run-time's results are the reference: 32-bit long), hex text,
// byte order, and Base64 against the RFC 4648 section 10 vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "DEString.h"

namespace {

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// Runs both overloads of a StringTo*Def function and checks that they agree.
#define EXPECT_PARSE(fn, text, def, expected)                        \
  do {                                                               \
    EXPECT_EQ(DE::fn(std::string(text), def), expected) << text;     \
    EXPECT_EQ(DE::fn(Wide(text), def), expected) << "wide " << text; \
  } while (0)

TEST(NumbersFromText, RangesFollowWindowsLong) {
  EXPECT_PARSE(StringToInt8Def, "127", (signed char)5, (signed char)127);
  EXPECT_PARSE(StringToInt8Def, "128", (signed char)5, (signed char)5);
  EXPECT_PARSE(StringToInt8Def, "4294967297", (signed char)5, (signed char)5);  // not wrapped to 1
  EXPECT_PARSE(StringToUInt8Def, "-1", (unsigned char)7, (unsigned char)7);
  EXPECT_PARSE(StringToUInt16Def, " 42 apples", (unsigned short)2, (unsigned short)42);

  EXPECT_PARSE(StringToInt32Def, "-", 7, 7);
  EXPECT_PARSE(StringToInt32Def, "\t\n -42x", 7, -42);
  EXPECT_PARSE(StringToInt32Def, "0x10", 7, 0);
  EXPECT_PARSE(StringToInt32Def, "2147483648", 7, 7);
  EXPECT_PARSE(StringToInt32Def, "-2147483648", 7, -2147483647 - 1);
  EXPECT_PARSE(StringToUInt32Def, "-1", 0u, 4294967295u);
  EXPECT_PARSE(StringToUInt32Def, "-4294967296", 3u, 3u);

  EXPECT_PARSE(StringToInt64Def, "9223372036854775808", 1LL, 1LL);
  EXPECT_PARSE(StringToUInt64Def, "18446744073709551616", 1ULL, 1ULL);
  EXPECT_PARSE(StringToUInt64Def, "-1", 1ULL, 18446744073709551615ULL);

  EXPECT_PARSE(StringToFloatDef, " -0.25kg", 2.0f, -0.25f);
  EXPECT_PARSE(StringToFloatDef, "1e39", 2.0f, 2.0f);
  EXPECT_PARSE(StringToDoubleDef, "0x1p3", 2.0, 8.0);
  // Infinity and NaN text is a number (not a failure) on both builds.
  EXPECT_PARSE(StringToFloatDef, "-INFINITY", 2.0f, -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(DE::StringToDoubleDef(std::wstring(L"NaN"), 2.0)));
}

TEST(HexText, IntToHexMatchesPrintf) {
  const long long samples[] = {0, -0x80000000LL, -255, 0x123456789, 0x7FFFFFFFFFFFFFFFLL};
  char expected[64];
  for (long long v : samples) {
    for (int digits = -1; digits <= 20; digits += 3) {
      const int width = digits < 0 ? 0 : digits;
      std::snprintf(expected, sizeof(expected), "%0*X", width, static_cast<unsigned>(v));
      EXPECT_EQ(DE::IntToHex(static_cast<int>(v), digits), expected) << v << " " << digits;
      EXPECT_EQ(DE::IntToHex(static_cast<unsigned>(v), digits), expected);
      std::snprintf(expected, sizeof(expected), "%0*llX", width, static_cast<unsigned long long>(v));
      EXPECT_EQ(DE::IntToHex(v, digits), expected) << v << " " << digits;
      EXPECT_EQ(DE::IntToHex(static_cast<unsigned long long>(v), digits), expected);
    }
  }
}

// Every digit both ways (decoding in either case); what a rejected text leaves behind.
TEST(HexText, DigitsRejectsAndByteOrder) {
  const std::string bytes("\x01\x23\x45\x67\x89\xAB\xCD\xEF", 8);
  EXPECT_EQ(DE::BytesToHexString(bytes), "0123456789ABCDEF");
  std::string out = "stale text longer than nothing";
  DE::BytesToHexString(bytes.data(), 3u, out);
  EXPECT_EQ(out, "012345");
  char buf[8] = {};
  ASSERT_EQ(DE::HexStringToBytes("0123456789abcdef", buf, 8), 8);
  EXPECT_EQ(std::string(buf, 8), bytes);
  ASSERT_EQ(DE::HexStringToBytesString("0123456789ABCDEF", out), 8);
  EXPECT_EQ(out, bytes);

  const unsigned char one = 0xAB;
  EXPECT_EQ(DE::BytesToHexString(static_cast<const unsigned char*>(nullptr), 4ULL), "");
  EXPECT_EQ(DE::BytesToHexString(&one, 0x8000000000000000ULL), "");
  EXPECT_EQ(DE::BytesToHexString(&one, 1ULL), "AB");

  char four[4] = {'w', 'x', 'y', 'z'};
  for (const char* bad : {"0g", "abc"}) EXPECT_EQ(DE::HexStringToBytes(bad, four, 4), 0) << bad;
  EXPECT_EQ(DE::HexStringToBytes("00", nullptr, 4), 0);
  EXPECT_EQ(DE::HexStringToBytes("0102", four, 1), 0);
  EXPECT_EQ(std::string(four, 4), "wxyz");  // nothing written so far
  EXPECT_EQ(DE::HexStringToBytes("0a0Bz1ff", four, 4), 0);
  EXPECT_EQ(std::string(four, 4), std::string("\x0A\x0Byz", 4));  // pairs before the bad one
  out = "keep";
  EXPECT_EQ(DE::HexStringToBytesString("12G4", out), 0);
  EXPECT_EQ(out, "keep");

  EXPECT_EQ(DE::HToNll(static_cast<long long>(0xFF00000000000080ULL)),
            static_cast<long long>(0x80000000000000FFULL));
}

TEST(Base64, Rfc4648VectorsAndWhereDecodingStops) {
  // Pairs of plain text and its encoding; the last one uses "+" and "/".
  const std::string vectors[] = {
      "",     "",         "f",     "Zg==",     "fo",     "Zm8=",     "foo",      "Zm9v",
      "foob", "Zm9vYg==", "fooba", "Zm9vYmE=", "foobar", "Zm9vYmFy", "\xFB\xFF", "+/8="};
  for (std::size_t i = 0; i < 16; i += 2) {
    std::string plain = vectors[i];
    EXPECT_EQ(
        DE::Base64Encode(reinterpret_cast<unsigned char*>(&plain[0]), static_cast<unsigned>(plain.size())),
        vectors[i + 1]);
    EXPECT_EQ(DE::Base64Decode(vectors[i + 1]), vectors[i]);
  }
  EXPECT_EQ(DE::Base64Encode(nullptr, 3), "");

  // Decoding ends at the first "=" or character outside the alphabet; unpadded groups of 3 and 2
  // characters give 2 and 1 bytes, a lone trailing character nothing.
  EXPECT_EQ(DE::Base64Decode("TW!E"), "M");
  EXPECT_EQ(DE::Base64Decode("TWF"), "Ma");
  EXPECT_EQ(DE::Base64Decode("TWFuT"), "Man");
  EXPECT_EQ(DE::Base64Decode("T"), "");
  EXPECT_EQ(DE::Base64Decode("TWFu=TWFu"), "Man");
  EXPECT_EQ(DE::Base64Decode("TW\xC3\xA9"), "M");
  EXPECT_EQ(DE::Base64Decode("=TWFu"), "");
  EXPECT_EQ(DE::Base64Decode(std::string("TWFu\0TWFu", 9)), "Man");
}

}  // namespace
