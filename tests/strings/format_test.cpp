// FormatString limits and the Windows reading of wide formats; GUID text and random strings.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <regex>
#include <set>
#include <string>

#include "DEString.h"
#include "common/log_capture.h"

namespace {

template <typename Char>
std::basic_string<Char> FormatThroughVaList(const Char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  std::basic_string<Char> out = DE::FormatString(fmt, args);
  va_end(args);
  return out;
}

TEST(FormatString, KeepsOneTo4093Characters) {
  const std::string n4093(4093, 'n');
  EXPECT_EQ(DE::FormatString("%s", n4093.c_str()), n4093);
  EXPECT_EQ(DE::FormatString("%s", std::string(4094, 'n').c_str()), "");
  EXPECT_EQ(FormatThroughVaList("%s%s", n4093.c_str(), ""), n4093);
  EXPECT_EQ(DE::FormatString(static_cast<const char*>(nullptr)), "");

  EXPECT_EQ(DE::FormatString(static_cast<const wchar_t*>(nullptr)), L"");
  // Limits count UTF-16 units: a character beyond the BMP counts twice on both builds.
  std::wstring astral;
  for (int i = 0; i < 2046; ++i) astral += L"\U0001F600";
  EXPECT_EQ(DE::FormatString(L"%sx", astral.c_str()), astral + L"x");  // 4093 units
  EXPECT_EQ(DE::FormatString(L"%sxy", astral.c_str()), L"");           // 4094 units
}

TEST(FormatString, ConversionsAndWindowsWideReading) {
  EXPECT_EQ(DE::FormatString("%d-%s-%5.1f-%c-%x-%%", 7, "x", 2.3, 'q', 255u), "7-x-  2.3-q-ff-%");
  // %S in a narrow format is a wide string on both builds.
  EXPECT_EQ(DE::FormatString("<%S>", L"wide"), "<wide>");
  // In wide formats %s / %c are wide and %S / %C narrow, as the Windows run-time reads them.
  EXPECT_EQ(
      DE::FormatString(L"%s|%S|%c|%C|%ls|%hs|%lc|%hc", L"wide", "narrow", L'w', 'n', L"l", "h", L'L', 'H'),
      L"wide|narrow|w|n|l|h|L|H");
  EXPECT_EQ(DE::FormatString(L"[%5.2s][%-4c][%-6S][%*s]", L"abc", L'x', "nar", 3, L"z"),
            L"[   ab][x   ][nar   ][  z]");
  EXPECT_EQ(DE::FormatString(L"%d%%%s %u %.3f", -5, L"\u00e9\u4e2d", 7u, 0.5), L"-5%\u00e9\u4e2d 7 0.500");

  EXPECT_EQ(DE::SafeStrLen(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(DE::SafeStrLen(L"ab\0c"), 2);
}

TEST(Guid, CaseMixUniquenessAndRandomStrings) {
  // The third group is lower-case, all others upper-case.
  const std::regex shape("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9a-f]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string guid = DE::GetGuidString();
    ASSERT_TRUE(std::regex_match(guid, shape)) << guid;
    seen.insert(guid);
  }
  EXPECT_EQ(seen.size(), 1000u);

  const std::regex digits28("[0-9A-F]{12}4[0-9a-f]{3}[89AB][0-9A-F]{11}");
  for (int len : {28, 40}) EXPECT_TRUE(std::regex_match(DE::GetRandomString(len), digits28)) << len;
  EXPECT_TRUE(std::regex_match(DE::GetRandomString(1), std::regex("[0-9A-F]")));

  // The buffer form copies with strcpy_s rules and logs when the string does not fit.
  test::LogCapture log;
  char buf[16];
  std::memset(buf, 'x', sizeof(buf));
  EXPECT_EQ(DE::GetRandomString(buf, 11, 10), buf);  // exactly fits with its NUL
  EXPECT_EQ(std::strlen(buf), 10u);
  EXPECT_EQ(DE::GetRandomString(nullptr, 16, 10), nullptr);
  EXPECT_TRUE(log.Messages().empty());

  EXPECT_EQ(DE::GetRandomString(buf, 10, 10), buf);
  EXPECT_EQ(buf[0], '\0');
  const auto messages = log.Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].level, PxsLog::Level::Error);
  EXPECT_EQ(messages[0].tag, "Util");
  EXPECT_EQ(messages[0].message, "GetRandomString fail. strcpy_s error(DE::GetRandomString)");
}

}  // namespace
