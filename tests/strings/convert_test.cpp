// Code-page conversions. Expected bytes come from Python's codecs (cp1252, gbk, utf-8) and, where
// Windows differs from Python, from the Windows build under Wine. (The command-line test checks
// GB18030 and random input against Python, and both builds against each other.)
#include <gtest/gtest.h>

#include <memory>

#include "DEString.h"
#include "common/platform_info.h"

namespace {

using DE::StringProc;

TEST(Utf8Conversion, AllPlanesAndWhereNulEndsTheText) {
  // Wide text the way a Windows caller holds it: UTF-16 units on Windows, code points on Linux
  // (a \U literal already is a surrogate pair where wchar_t has 16 bits).
  const std::wstring mixed = L"A\u00e9\u4e2d\U0001F600";
  const std::string mixedUtf8 = "A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
  EXPECT_EQ(DE::UTF8ToUnicode(mixedUtf8), mixed);
  EXPECT_EQ(DE::UnicodeToUTF8(mixed), mixedUtf8);
  EXPECT_EQ(DE::UTF8ToUnicode(""), L"");

  // The DE forms stop at the first NUL; StringProc's convert the whole length.
  const std::string withNul("ab\0cd", 5);
  EXPECT_EQ(DE::UTF8ToUnicode(withNul), L"ab");
  EXPECT_EQ(DE::ANSIToUnicode(withNul), L"ab");
  EXPECT_EQ(StringProc::StringToWStringByUTF8(withNul), std::wstring(L"ab\0cd", 5));
  EXPECT_EQ(StringProc::StringToWString(withNul), std::wstring(L"ab\0cd", 5));
  EXPECT_EQ(StringProc::WStringToStringByUTF8(std::wstring(L"x\0y", 3)), std::string("x\0y", 3));
  EXPECT_EQ(DE::UnicodeToUTF8(std::wstring(L"x\0y", 3)), "x");
}

TEST(Utf8Conversion, IllFormedInputAndLoneSurrogatesBecomeReplacementCharacters) {
  // Each row: input bytes, expected wide text (Windows' decoder, observed under Wine).
  const struct {
    std::string utf8;
    std::wstring wide;
  } rows[] = {
      {"\xC3", L"\uFFFD"},                          // cut off at the end
      {"a\xE4\xB8|", L"a\uFFFD|"},                  // cut off before a non-continuation
      {"\xE0x", L"\uFFFD"},                         // a short tail is swallowed whole
      {"\xC0\xAF", L"\uFFFD\uFFFD"},                // overlong two-byte lead
      {"\xE0\x80\x80", L"\uFFFD\uFFFD"},            // overlong three-byte form
      {"\xED\xA0\x80", L"\uFFFD\uFFFD"},            // encoded surrogate
      {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD"},  // past U+10FFFF
      {"\xF5\x80", L"\uFFFD\uFFFD"},                // lead bytes F5 and up never start a sequence
      {"\x80\xBFz", L"\uFFFD\uFFFDz"},              // stray continuations
      {"\xEF\xBB\xBF\x61", L"\uFEFFa"},             // a BOM is an ordinary character
  };
  for (const auto& row : rows) {
    EXPECT_EQ(StringProc::StringToWStringByUTF8(row.utf8), row.wide) << testing::PrintToString(row.utf8);
  }

  const std::wstring lone = {static_cast<wchar_t>(0xD800), L'x', static_cast<wchar_t>(0xDC00)};
  EXPECT_EQ(StringProc::WStringToStringByUTF8(lone), "\xEF\xBF\xBDx\xEF\xBF\xBD");
  // A pair held in two units is one character wherever wchar_t is wide enough to hold it whole.
  const std::wstring pair = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
  EXPECT_EQ(StringProc::WStringToStringByUTF8(pair), "\xF0\x9F\x98\x80");
}

TEST(AnsiConversion, SingleBytePage1252) {
  if (test::AnsiCodePage() != 1252) GTEST_SKIP() << "runs with ANSI code page 1252";
  const std::string bytes = "Gr\xFC\xDF\x65 \x80 \xBD";  // Python: "Grüße € ½".encode("cp1252")
  const std::wstring text = L"Gr\u00fc\u00dfe \u20ac \u00bd";
  EXPECT_EQ(DE::ANSIToUnicode(bytes), text);
  EXPECT_EQ(DE::UnicodeToANSI(text), bytes);
  EXPECT_EQ(DE::ANSIToUTF8(bytes), "Gr\xC3\xBC\xC3\x9F\x65 \xE2\x82\xAC \xC2\xBD");
  EXPECT_EQ(DE::UTF8ToANSI("Gr\xC3\xBC\xC3\x9F\x65"), "Gr\xFC\xDF\x65");
  // Bytes with no character in the page map to the code point of the same number.
  EXPECT_EQ(DE::ANSIToUnicode("\x81\x8D\x9D"), L"\u0081\u008d\u009d");
  // Characters the page lacks become one "?" per UTF-16 unit.
  EXPECT_EQ(DE::UnicodeToANSI(L"\u4e2d\U0001F600!"), "\?\?\?!");
  EXPECT_EQ(DE::GetMultiByteToWideCharBufLen(L"\u4e2d\u00fc"), 3);
}

TEST(AnsiConversion, DoubleBytePage936) {
  if (test::AnsiCodePage() != 936) GTEST_SKIP() << "runs with ANSI code page 936";
  const std::string bytes = "\xD6\xD0\xCE\xC4";  // Python: "中文".encode("gbk")
  EXPECT_EQ(DE::ANSIToUnicode(bytes), L"\u4e2d\u6587");
  EXPECT_EQ(DE::UnicodeToANSI(L"\u4e2d\u6587"), bytes);
  // Windows' 936 (and iconv's) map the euro sign to 0x80, where Python's gbk has none.
  EXPECT_EQ(DE::UnicodeToANSI(L"\u20ac"), "\x80");
  EXPECT_EQ(DE::ANSIToUnicode("\x80"), L"\u20ac");
  // A lead byte with nothing after it decodes to "?".
  EXPECT_EQ(DE::ANSIToUnicode("a\xD6"), L"a?");
  EXPECT_EQ(DE::UnicodeToANSI(L"\u0081\U0001F600"), "???");
  EXPECT_EQ(DE::GetMultiByteToWideCharBufLen(bytes.c_str()), 3);
  EXPECT_EQ(DE::GetMultiByteToWideCharBufLen(L"\u4e2d\u6587"), 5);
}

TEST(RawBuffers, AllocatedAndBoundedCopies) {
  std::unique_ptr<wchar_t[]> wide(DE::CharToWchar("abc"));
  std::unique_ptr<char[]> narrow(DE::WcharToChar(L"xyz"));
  ASSERT_TRUE(wide && narrow);
  EXPECT_EQ(std::wstring(wide.get()), L"abc");
  EXPECT_EQ(std::string(narrow.get()), "xyz");
  EXPECT_EQ(DE::CharToWchar(nullptr), nullptr);
  EXPECT_EQ(DE::WcharToChar(nullptr), nullptr);

  // Bounded forms truncate and always terminate.
  wchar_t wbuf[4] = {L'#', L'#', L'#', L'#'};
  EXPECT_EQ(DE::CharToWchar(wbuf, 4, "abcdef"), wbuf);
  EXPECT_EQ(std::wstring(wbuf), L"abc");
  EXPECT_EQ(DE::CharToWchar(wbuf, 1, "abcdef"), wbuf);
  EXPECT_EQ(wbuf[0], L'\0');
  EXPECT_EQ(DE::CharToWchar(wbuf, 0, "a"), nullptr);
  EXPECT_EQ(DE::CharToWchar(wbuf, 4, nullptr), nullptr);
  char nbuf[3] = {'#', '#', '#'};
  EXPECT_EQ(DE::WcharToChar(nbuf, 3, L"xyz"), nbuf);
  EXPECT_EQ(std::string(nbuf), "xy");
  EXPECT_EQ(DE::WcharToChar(nbuf, -1, L"x"), nullptr);
  EXPECT_EQ(DE::GetMultiByteToWideCharBufLen(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(DE::GetMultiByteToWideCharBufLen(""), 1);
}

}  // namespace
