// Trimming, cutting, splitting, replacing and case mapping, narrow and wide.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DEString.h"

namespace {

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// Runs an in-place function on a copy of `s` and returns the result.
std::string InPlace(void (*fn)(std::string&), std::string s) {
  fn(s);
  return s;
}

// Runs a Fetch function on a copy of `src`; returns the field taken and what remains, split by "|".
template <typename Fn>
std::string Taken(Fn fn, std::string src) {
  const std::string field = fn(src);
  return field + "|" + src;
}

TEST(TextTrim, OnlySpacesAreTrimmedAndRTrimKeepsTheFirstCharacter) {
  EXPECT_EQ(DE::TrimSP("\t a b\r\n "), "\t a b\r\n");
  EXPECT_EQ(DE::TrimSPLeft("  a  "), "a  ");
  EXPECT_EQ(DE::TrimSPRight(Wide("  a  ")), L"  a");
  EXPECT_EQ(DE::TrimSPRight("   "), "");
  EXPECT_EQ(DE::StringProc::StringTrim("    "), "");
  EXPECT_EQ(DE::StringProc::WStringTrim(L"  v w  "), L"v w");
  EXPECT_EQ(InPlace(DE::RTrim, "   "), " ");
  EXPECT_EQ(InPlace(DE::Trim, "   "), "");
  EXPECT_EQ(InPlace(DE::Trim, "  x\t "), "x\t");
}

TEST(TextCut, SeparateFetchAndLines) {
  EXPECT_EQ(DE::SeparateLeft("k=v=w", "="), "k");
  EXPECT_EQ(DE::SeparateRight("k=v=w", "="), "v=w");
  EXPECT_EQ(DE::SeparateLeft("kv", ""), "");
  EXPECT_EQ(DE::SeparateRight("kv", ""), "kv");

  auto bin = [](const char* sep) { return [sep](std::string& s) { return DE::FetchBin(s, sep); }; };
  EXPECT_EQ(Taken(bin(","), "a,b"), "a|b");
  EXPECT_EQ(Taken(bin(","), "abc"), "abc|");
  EXPECT_EQ(Taken(bin(""), "abc"), "|");
  std::wstring wsrc = L" x ; y ; z ";
  EXPECT_EQ(DE::Fetch(wsrc, L";"), L"x");
  EXPECT_EQ(wsrc, L"y ; z");

  auto ex = [](const char* sep, const char* quote) {
    return [=](std::string& s) { return DE::FetchEx(s, sep, quote); };
  };
  EXPECT_EQ(Taken(ex(",", "'"), "'x,y',z"), "'x,y'|z");
  EXPECT_EQ(Taken(ex("::", "'"), "a'b::c'::d"), "a'b::c'|d");  // quote in mid-field
  EXPECT_EQ(Taken(ex(",", "'"), "'open,never closed"), "'open,never closed|");
  EXPECT_EQ(Taken(ex("", "'"), "a,b"), "|a,b");
  // A two-character quote is tested as a prefix at every step: "''" opens at the first "'", and
  // the second "'" (followed by "x") no longer matches, so it stays open until "''" again.
  EXPECT_EQ(Taken(ex(",", "''"), "''x,''y,z"), "''x,''y|z");

  std::string src = "a\r\nb\n\nc\n\rd\r\re\r";
  std::vector<std::string> lines;
  while (!src.empty()) lines.push_back(DE::FetchLine(src));
  EXPECT_EQ(lines, (std::vector<std::string>{"a", "b", "", "c", "d", "", "e"}));
}

TEST(TextSplit, CharacterSetTokenizer) {
  auto split = [](std::vector<std::string> out, const char* s, const char* delims) {
    DE::Split(s, delims, out);
    return out;
  };
  EXPECT_EQ(split({"kept"}, ",a,,b,", ","), (std::vector<std::string>{"kept", "", "a", "b"}));
  EXPECT_EQ(split({}, "", ","), std::vector<std::string>{""});
  EXPECT_EQ(split({}, "a b", ""), std::vector<std::string>{"a b"});
  std::vector<std::wstring> wout;
  DE::SplitW(L"k=v; x = y", L"=; ", wout);
  EXPECT_EQ(wout, (std::vector<std::wstring>{L"k", L"v", L"x", L"y"}));
}

TEST(TextReplace, CountRules) {
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", 0), "baaa");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", 2), "bbaa");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", -1), "bbbb");
  EXPECT_EQ(DE::Replace("aaaa", "a", "b", -2), "bbbb");
  EXPECT_EQ(DE::Replace("aaa", "a", "ab", -1), "ababab");
  EXPECT_EQ(DE::Replace("abab", "ab", "", 10), "");
  // An empty `from` inserts at successive positions, each right after the last insertion.
  EXPECT_EQ(DE::Replace("ab", "", "X", -1), "XXab");
  EXPECT_EQ(DE::Replace("", "", "X", -5), "X");
  EXPECT_EQ(DE::Replace("ab", "", "", -5), "ab");
  EXPECT_EQ(DE::Replace(Wide("a.b.c"), L".", L"::", -1), L"a::b::c");

  EXPECT_EQ(DE::StringProc::ReplacePlaceholder(L"Hello", L"X", L"%s"), L"");
  EXPECT_EQ(DE::StringProc::ReplacePlaceholder(L"Hi %s, %s", L"Bo", L"%s"), L"Hi Bo, %s");
}

TEST(TextCase, SingleByteMappingOnly) {
  EXPECT_EQ(DE::UpperCase("abz09 AZ\xE9"), "ABZ09 AZ\xE9");
  EXPECT_EQ(DE::LowerCase("ABZ09 az\xC9"), "abz09 az\xC9");
  // Units whose low byte is a letter are not letters: 0x0161 must not become 0x0141.
  const std::wstring lower = std::wstring(L"aZ") + wchar_t(0xE9) + wchar_t(0x0161) + wchar_t(0x0430) + L"q";
  const std::wstring upper = std::wstring(L"AZ") + wchar_t(0xE9) + wchar_t(0x0161) + wchar_t(0x0430) + L"Q";
  EXPECT_EQ(DE::UpperCase(lower), upper);
  EXPECT_EQ(DE::LowerCase(upper), std::wstring(L"az") + lower.substr(2));
}

}  // namespace
