// Trimming, cutting, splitting, replacing and case mapping, narrow and wide.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DEString.h"

namespace {

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

TEST(TextTrim, OnlySpacesAreTrimmedAndRTrimKeepsTheFirstCharacter) {
  EXPECT_EQ(DE::TrimSP("  a b  "), "a b");
  EXPECT_EQ(DE::TrimSP(Wide("  a b  ")), L"a b");
  EXPECT_EQ(DE::TrimSPLeft("  a  "), "a  ");
  EXPECT_EQ(DE::TrimSPRight(Wide("  a  ")), L"  a");
  EXPECT_EQ(DE::TrimSPRight("   "), "");
  EXPECT_EQ(DE::TrimSP("\t a\r\n "), "\t a\r\n");

  std::string s = "   ";
  DE::RTrim(s);
  EXPECT_EQ(s, " ");
  s = "ab  ";
  DE::RTrim(s);
  EXPECT_EQ(s, "ab");
  s = "   ";
  DE::Trim(s);
  EXPECT_EQ(s, "");
  s = "  x\t ";
  DE::Trim(s);
  EXPECT_EQ(s, "x\t");
  s = "  y ";
  DE::LTrim(s);
  EXPECT_EQ(s, "y ");

  EXPECT_EQ(DE::StringProc::StringTrim(""), "");
  EXPECT_EQ(DE::StringProc::StringTrim("    "), "");
  EXPECT_EQ(DE::StringProc::WStringTrim(L"  v w  "), L"v w");
}

TEST(TextCut, SeparateAndFetchBin) {
  EXPECT_EQ(DE::SeparateLeft("k=v=w", "="), "k");
  EXPECT_EQ(DE::SeparateRight("k=v=w", "="), "v=w");
  EXPECT_EQ(DE::SeparateLeft("kv", "="), "kv");
  EXPECT_EQ(DE::SeparateRight("kv", "="), "kv");
  EXPECT_EQ(DE::SeparateLeft("kv", ""), "");
  EXPECT_EQ(DE::SeparateRight("kv", ""), "kv");
  EXPECT_EQ(DE::SeparateLeft(Wide("a::b"), L"::"), L"a");
  EXPECT_EQ(DE::SeparateRight(Wide("a::b"), L"::"), L"b");

  std::string src = "a,b";
  EXPECT_EQ(DE::FetchBin(src, ","), "a");
  EXPECT_EQ(src, "b");
  src = "abc";
  EXPECT_EQ(DE::FetchBin(src, ","), "abc");
  EXPECT_EQ(src, "");
  src = "abc";
  EXPECT_EQ(DE::FetchBin(src, ""), "");
  EXPECT_EQ(src, "");
  src = "a,";
  EXPECT_EQ(DE::FetchBin(src, ","), "a");
  EXPECT_EQ(src, "");

  std::wstring wsrc = L" x ; y ; z ";
  EXPECT_EQ(DE::Fetch(wsrc, L";"), L"x");
  EXPECT_EQ(wsrc, L"y ; z");
  std::string nsrc = " x ";
  EXPECT_EQ(DE::Fetch(nsrc, ";"), "x");
  EXPECT_EQ(nsrc, "");
}

TEST(TextCut, FetchExHonoursQuotes) {
  std::string src = "'x,y',z";
  EXPECT_EQ(DE::FetchEx(src, ",", "'"), "'x,y'");
  EXPECT_EQ(src, "z");
  EXPECT_EQ(DE::FetchEx(src, ",", "'"), "z");
  EXPECT_EQ(src, "");

  src = "a'b::c'::d";  // multi-character separator, quote in mid-field
  EXPECT_EQ(DE::FetchEx(src, "::", "'"), "a'b::c'");
  EXPECT_EQ(src, "d");
  src = "'open,never closed";
  EXPECT_EQ(DE::FetchEx(src, ",", "'"), "'open,never closed");
  EXPECT_EQ(src, "");
  src = "a,b";
  EXPECT_EQ(DE::FetchEx(src, "", "'"), "");
  EXPECT_EQ(src, "a,b");

  // A two-character quote is tested as a prefix at every step: "''" opens at the first "'" and
  // the second "'" (followed by "x") no longer matches, so the state stays open until "''" again.
  src = "''x,''y,z";
  EXPECT_EQ(DE::FetchEx(src, ",", "''"), "''x,''y");
  EXPECT_EQ(src, "z");

  std::wstring wsrc = L"\"a;b\";c";
  EXPECT_EQ(DE::FetchEx(wsrc, L";", L"\""), L"\"a;b\"");
  EXPECT_EQ(wsrc, L"c");
}

TEST(TextCut, FetchLineBreaks) {
  std::string src = "a\r\nb";
  EXPECT_EQ(DE::FetchLine(src), "a");
  EXPECT_EQ(src, "b");
  src = "a\n\nb";
  EXPECT_EQ(DE::FetchLine(src), "a");
  EXPECT_EQ(src, "\nb");
  src = "a\n\rb\r\rc";
  EXPECT_EQ(DE::FetchLine(src), "a");
  EXPECT_EQ(DE::FetchLine(src), "b");
  EXPECT_EQ(src, "\rc");
  EXPECT_EQ(DE::FetchLine(src), "");
  EXPECT_EQ(DE::FetchLine(src), "c");
  EXPECT_EQ(src, "");
  src = "x\r";
  EXPECT_EQ(DE::FetchLine(src), "x");
  EXPECT_EQ(src, "");

  std::wstring wsrc = L"one\r\ntwo";
  EXPECT_EQ(DE::FetchLine(wsrc), L"one");
  EXPECT_EQ(DE::FetchLine(wsrc), L"two");
  EXPECT_EQ(wsrc, L"");
}

TEST(TextSplit, CharacterSetTokenizer) {
  std::vector<std::string> out = {"kept"};
  DE::Split(",a,,b,", ",", out);
  EXPECT_EQ(out, (std::vector<std::string>{"kept", "", "a", "b"}));

  out.clear();
  DE::Split("", ",", out);
  EXPECT_EQ(out, std::vector<std::string>{""});
  out.clear();
  DE::Split("a b", "", out);
  EXPECT_EQ(out, std::vector<std::string>{"a b"});
  out.clear();
  DE::Split("k=v; x = y", "=; ", out);
  EXPECT_EQ(out, (std::vector<std::string>{"k", "v", "x", "y"}));

  std::vector<std::wstring> wout;
  DE::SplitW(L"|a||b", L"|", wout);
  EXPECT_EQ(wout, (std::vector<std::wstring>{L"", L"a", L"b"}));
}

TEST(TextReplace, CountRules) {
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", 0), "baaa");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", 2), "bbaa");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", -1), "bbbb");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", -2), "bbbb");
  EXPECT_EQ(DE::Replace("aa", "a", "aa", -1), "aaaa");
  EXPECT_EQ(DE::Replace("abab", "ab", "", 10), "");
  EXPECT_EQ(DE::Replace("xyz", "q", "r", -1), "xyz");
  // A non-empty `from` can match at most once per character, so -1 only bites with an empty one.
  EXPECT_EQ(DE::Replace("a"
                        "a"
                        "a",
                        "a", "ab", -1),
            "ababab");
  // An empty `from` inserts at successive positions, each right after the last insertion.
  EXPECT_EQ(DE::Replace("ab", "", "X", -1), "XXab");
  EXPECT_EQ(DE::Replace("ab", "", "X", 0), "Xab");
  EXPECT_EQ(DE::Replace("", "", "X", -5), "X");
  EXPECT_EQ(DE::Replace("ab", "", "", -5), "ab");

  EXPECT_EQ(DE::Replace(Wide("a.b.c"), L".", L"::", -1), L"a::b::c");
  EXPECT_EQ(DE::Replace(Wide("a.b.c"), L".", L"::", 0), L"a::b.c");

  EXPECT_EQ(DE::StringProc::ReplacePlaceholder(L"Hello", L"X", L"%s"), L"");
  EXPECT_EQ(DE::StringProc::ReplacePlaceholder(L"Hi %s, %s", L"Bo", L"%s"), L"Hi Bo, %s");
}

TEST(TextCase, SingleByteMappingOnly) {
  EXPECT_EQ(DE::UpperCase("abz09 AZ\xE9"), "ABZ09 AZ\xE9");
  EXPECT_EQ(DE::LowerCase("ABZ09 az\xC9"), "abz09 az\xC9");
  const std::wstring mixed = std::wstring(L"aZ") + wchar_t(0xE9) + wchar_t(0x0161) + wchar_t(0x0430) + L"q";
  const std::wstring upper = std::wstring(L"AZ") + wchar_t(0xE9) + wchar_t(0x0161) + wchar_t(0x0430) + L"Q";
  EXPECT_EQ(DE::UpperCase(mixed), upper);
  EXPECT_EQ(DE::LowerCase(upper),
            std::wstring(L"az") + wchar_t(0xE9) + wchar_t(0x0161) + wchar_t(0x0430) + L"q");
  // Units whose low byte is a letter are not letters: 0x0161 must not become 0x0141.
  EXPECT_EQ(DE::UpperCase(std::wstring(1, wchar_t(0x0161))), std::wstring(1, wchar_t(0x0161)));
}

}  // namespace
