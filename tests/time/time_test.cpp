// Date and time functions: UTC conversions against Python's datetime, local time against Python's
// zoneinfo in the zones tests.cmake runs the suite in (TZ=EST5EDT and TZ=UTC).
#include "DETime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/log_capture.h"

namespace {

std::uint64_t FileTimeValue(const FILETIME& ft) {
  return (static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
}

FILETIME MakeFileTime(std::uint64_t value) {
  FILETIME ft;
  ft.dwLowDateTime = static_cast<DWORD>(value & 0xFFFFFFFFULL);
  ft.dwHighDateTime = static_cast<DWORD>(value >> 32);
  return ft;
}

SYSTEMTIME MakeSystemTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                          int milliseconds = 0) {
  SYSTEMTIME st;
  st.wYear = static_cast<WORD>(year);
  st.wMonth = static_cast<WORD>(month);
  st.wDayOfWeek = 0;
  st.wDay = static_cast<WORD>(day);
  st.wHour = static_cast<WORD>(hour);
  st.wMinute = static_cast<WORD>(minute);
  st.wSecond = static_cast<WORD>(second);
  st.wMilliseconds = static_cast<WORD>(milliseconds);
  return st;
}

std::string Text(const SYSTEMTIME& st) {
  char text[80];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u dow %u", st.wYear, st.wMonth, st.wDay,
                st.wHour, st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek);
  return text;
}

long long LowBitsSignExtended(long long t) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(t & 0xFFFFFFFFLL));
}

bool RunningUnderWine() {
#if defined(_WIN32)
  HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
#else
  return false;
#endif
}

// UTC instants, generated with Python's datetime: t = seconds since 1970, SYSTEMTIME fields with
// the ISO weekday mod 7, FILETIME = microseconds since 1601-01-01 times 10. The 30827 row is the
// 2827 one moved by 70 whole 400-year cycles (146097 days each), beyond datetime's range.
struct UtcInstant {
  long long t;
  SYSTEMTIME st;
  std::uint64_t filetime;
};

const UtcInstant kInstants[] = {
    {-11644473600LL, {1601, 1, 1, 1, 0, 0, 0, 0}, 0ULL},
    {-2147483648LL, {1901, 12, 5, 13, 20, 45, 52, 0}, 94969899520000000ULL},
    {-1LL, {1969, 12, 3, 31, 23, 59, 59, 0}, 116444735990000000ULL},
    {0LL, {1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000ULL},
    {946684799LL, {1999, 12, 5, 31, 23, 59, 59, 0}, 125911583990000000ULL},
    {951827696LL, {2000, 2, 2, 29, 12, 34, 56, 0}, 125963012960000000ULL},
    {1483228799LL, {2016, 12, 6, 31, 23, 59, 59, 0}, 131277023990000000ULL},
    {2147483647LL, {2038, 1, 2, 19, 3, 14, 7, 0}, 137919572470000000ULL},
    {4107542399LL, {2100, 2, 0, 28, 23, 59, 59, 0}, 157520159990000000ULL},
    {4107542400LL, {2100, 3, 1, 1, 0, 0, 0, 0}, 157520160000000000ULL},
    {910670515199LL, {30827, 12, 5, 31, 23, 59, 59, 0}, 9223149887990000000ULL},
};

TEST(TimeConversion, KnownInstantsAgreeWithPython) {
  for (const UtcInstant& row : kInstants) {
    SCOPED_TRACE(Text(row.st));
    SYSTEMTIME input = row.st;
    input.wDayOfWeek = 9;  // ignored on input
    long long t = 12345;
    EXPECT_EQ(DE::SystemTimeToTimet(&input, &t), 1);
    EXPECT_EQ(t, row.t);
    EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(row.filetime)), row.t);

    // time_t beyond 32 bits is first cut to its low half, sign-extended.
    const long long low = LowBitsSignExtended(row.t);
    SYSTEMTIME out = MakeSystemTime(1, 1, 1);
    ASSERT_EQ(DE::TimetToSystemTime(row.t, &out), 1);
    SYSTEMTIME outLow = MakeSystemTime(1, 1, 1);
    ASSERT_EQ(DE::TimetToSystemTime(low, &outLow), 1);
    EXPECT_EQ(Text(out), Text(outLow));
    EXPECT_EQ(FileTimeValue(DE::TimetToFileTime(row.t)), FileTimeValue(DE::TimetToFileTime(low)));
    if (low == row.t) {
      EXPECT_EQ(Text(out), Text(row.st));
      EXPECT_EQ(FileTimeValue(DE::TimetToFileTime(row.t)), row.filetime);
    }
  }
}

TEST(TimeConversion, OnlyTheLow32BitsOfTimeCount) {
  const FILETIME epoch = DE::TimetToFileTime(0);
  EXPECT_EQ(epoch.dwHighDateTime, 0x019DB1DEu);
  EXPECT_EQ(epoch.dwLowDateTime, 0xD53E8000u);
  EXPECT_EQ(FileTimeValue(DE::TimetToFileTime(0x100000000LL)), 116444736000000000ULL);

  // One second after 2038-01-19 03:14:07 wraps to 1901-12-13 20:45:52, a Friday.
  SYSTEMTIME st = MakeSystemTime(1, 1, 1);
  ASSERT_EQ(DE::TimetToSystemTime(0x80000000LL, &st), 1);
  EXPECT_EQ(Text(st), "1901-12-13 20:45:52.000 dow 5");
  ASSERT_EQ(DE::TimetToSystemTime(0xFFFFFFFFLL, &st), 1);
  EXPECT_EQ(Text(st), "1969-12-31 23:59:59.000 dow 3");
  ASSERT_EQ(DE::TimetToSystemTime(0x17FFFFFFFLL, &st), 1);
  EXPECT_EQ(Text(st), "2038-01-19 03:14:07.000 dow 2");

  EXPECT_EQ(DE::TimetToSystemTime(0, nullptr), 0);
}

TEST(TimeConversion, FileTimeToTimetTruncatesTowardZero) {
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL)), 0);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL + 9999999)), 0);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL - 1)), 0);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL - 10000000)), -1);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL - 10000001)), -1);
  // The difference is read as signed 64-bit (values from Python, modulo 2^64).
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(0)), -11644473600LL);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(0x7FFFFFFFFFFFFFFFULL)), 910692730085LL);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(0xFFFFFFFFFFFFFFFFULL)), -11644473600LL);

  // Milliseconds go the same way through SystemTimeToTimet.
  long long t = 12345;
  SYSTEMTIME st = MakeSystemTime(1969, 12, 31, 23, 59, 59, 500);
  ASSERT_EQ(DE::SystemTimeToTimet(&st, &t), 1);
  EXPECT_EQ(t, 0);
  st = MakeSystemTime(1969, 12, 31, 23, 59, 58, 1);
  ASSERT_EQ(DE::SystemTimeToTimet(&st, &t), 1);
  EXPECT_EQ(t, -1);
  st = MakeSystemTime(1970, 1, 1, 0, 0, 0, 999);
  ASSERT_EQ(DE::SystemTimeToTimet(&st, &t), 1);
  EXPECT_EQ(t, 0);
}

TEST(TimeConversion, SystemTimeToTimetValidatesTheRecord) {
  const SYSTEMTIME invalid[] = {
      MakeSystemTime(2023, 13, 1),          MakeSystemTime(2023, 0, 1),
      MakeSystemTime(2023, 2, 30),          MakeSystemTime(2023, 4, 31),
      MakeSystemTime(2023, 1, 0),           MakeSystemTime(1600, 12, 31, 23, 59, 59, 999),
      MakeSystemTime(2023, 1, 1, 24),       MakeSystemTime(2023, 1, 1, 0, 60),
      MakeSystemTime(2023, 1, 1, 0, 0, 60), MakeSystemTime(2023, 1, 1, 0, 0, 0, 1000),
      MakeSystemTime(65535, 1, 1),
  };
  for (const SYSTEMTIME& st : invalid) {
    long long t = 12345;
    EXPECT_EQ(DE::SystemTimeToTimet(&st, &t), 0) << Text(st);
    EXPECT_EQ(t, 12345) << Text(st);
  }

  const struct {
    SYSTEMTIME st;
    long long t;
  } valid[] = {
      {MakeSystemTime(2024, 2, 29), 1709164800LL},
      {MakeSystemTime(2000, 2, 29), 951782400LL},
      {MakeSystemTime(2023, 2, 28, 23, 59, 59, 999), 1677628799LL},
      {MakeSystemTime(30827, 12, 31, 23, 59, 59, 999), 910670515199LL},
  };
  for (const auto& row : valid) {
    long long t = 12345;
    EXPECT_EQ(DE::SystemTimeToTimet(&row.st, &t), 1) << Text(row.st);
    EXPECT_EQ(t, row.t) << Text(row.st);
  }

  long long t = 12345;
  const SYSTEMTIME good = MakeSystemTime(2024, 1, 1);
  EXPECT_EQ(DE::SystemTimeToTimet(&good, nullptr), 0);
  EXPECT_EQ(DE::SystemTimeToTimet(nullptr, &t), 0);
  EXPECT_EQ(t, 12345);
}

TEST(TimeConversion, LeapDayAndYearLimitsOfTheWindowsCalendar) {
  if (RunningUnderWine()) {
    GTEST_SKIP() << "Wine's SystemTimeToFileTime accepts 29 February of every year and years after 30827";
  }
  for (const SYSTEMTIME& st : {MakeSystemTime(2023, 2, 29), MakeSystemTime(2100, 2, 29),
                               MakeSystemTime(1900, 2, 29), MakeSystemTime(30828, 1, 1)}) {
    long long t = 12345;
    EXPECT_EQ(DE::SystemTimeToTimet(&st, &t), 0) << Text(st);
    EXPECT_EQ(t, 12345) << Text(st);
  }
}

TEST(FormatDateTime, NoTimeGivesEmptyText) {
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d", -1), "");
  EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d", -1), L"");
  // The Windows run-time has no local time before 1970 or after 3000-12-31 23:59:59 UTC.
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d", -2), "");
  EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d", -86400), L"");
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d", 32535216000LL), "");
  EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d", 32535216000LL), L"");
  EXPECT_EQ(DE::FormatDateTime(static_cast<const char*>(nullptr), 0), "");
  EXPECT_EQ(DE::FormatDateTime(static_cast<const wchar_t*>(nullptr), 0), L"");
  EXPECT_EQ(DE::FormatDateTime("", 0), "");
  EXPECT_EQ(DE::FormatDateTime(L"", 0), L"");
}

TEST(FormatDateTime, HundredCharacterBuffer) {
  const long long t = 1656676800;  // 2022 in every zone
  const std::string fits(99, 'x');
  EXPECT_EQ(DE::FormatDateTime(fits.c_str(), t), fits);
  EXPECT_EQ(DE::FormatDateTime(std::wstring(99, L'x').c_str(), t), std::wstring(99, L'x'));

  // Narrow output needs room for its NUL; the wide text is whatever the buffer holds, so a
  // longer result is cut at 100 characters.
  const std::string exact(100, 'x');
  EXPECT_EQ(DE::FormatDateTime(exact.c_str(), t), "");
  EXPECT_EQ(DE::FormatDateTime(std::wstring(100, L'x').c_str(), t), std::wstring(100, L'x'));
  std::string years;
  std::wstring wideYears;
  for (int i = 0; i < 30; ++i) {
    years += "%Y";
    wideYears += L"%Y";
  }
  EXPECT_EQ(DE::FormatDateTime(years.c_str(), t), "");
  std::wstring expected;
  for (int i = 0; i < 25; ++i) expected += L"2022";
  EXPECT_EQ(DE::FormatDateTime(wideYears.c_str(), t), expected);
  const std::wstring longText = std::wstring(60, L'a') + std::wstring(60, L'b');
  EXPECT_EQ(DE::FormatDateTime(longText.c_str(), t), longText.substr(0, 100));
  // The run-time formats wide text through a scratch area four times the buffer.
  EXPECT_EQ(DE::FormatDateTime(std::wstring(399, L'y').c_str(), t), std::wstring(100, L'y'));
  EXPECT_EQ(DE::FormatDateTime(std::wstring(400, L'y').c_str(), t), L"");
}

TEST(FormatDateTime, BufferFormCopiesOrLogs) {
  EXPECT_EQ(DE::FormatDateTime(nullptr, 10, "%Y", 1656676800), nullptr);

  char buf[8];
  std::memset(buf, 'z', sizeof buf);
  {
    test::LogCapture log;
    EXPECT_EQ(DE::FormatDateTime(buf, 5, "%Y", 1656676800), buf);
    EXPECT_STREQ(buf, "2022");
    EXPECT_EQ(DE::FormatDateTime(buf, 1, "%Y", -1), buf);
    EXPECT_STREQ(buf, "");
    EXPECT_TRUE(log.Messages().empty());
  }

  std::memset(buf, 'z', sizeof buf);
  test::LogCapture log;
  EXPECT_EQ(DE::FormatDateTime(buf, 4, "%Y", 1656676800), buf);
  EXPECT_EQ(buf[0], '\0');
  buf[0] = 'z';
  EXPECT_EQ(DE::FormatDateTime(buf, 0, "%Y", 1656676800), buf);
  EXPECT_EQ(buf[0], 'z');
  const std::vector<test::LoggedMessage> messages = log.Messages();
  ASSERT_EQ(messages.size(), 2u);
  for (const test::LoggedMessage& m : messages) {
    EXPECT_EQ(m.level, PxsLog::Level::Error);
    EXPECT_EQ(m.tag, "Util");
    EXPECT_EQ(m.message, "FormatDateTime fail. strcpy_s error(DE::FormatDateTime)");
  }
}

// Local-time expectations, computed with Python's zoneinfo. EncodeDateTime reads its fields as
// standard time, so summer dates come out one hour later than the wall clock (2022-07-01 12:00
// in EST5EDT: 1656694800, where the daylight-saving reading would be 1656691200).
struct FormatCase {
  long long t;
  const char* text;
};
struct EncodeCase {
  int year, month, day, hour, minute, second;
  long long expected;
};
struct ZoneCases {
  const char* tz;
  std::vector<FormatCase> format;
  const char* letters;  // at 1656676800 (2022-07-01 12:00:00 UTC)
  std::vector<EncodeCase> encode;
};

const ZoneCases kZones[] = {
    {"EST5EDT",
     {{0, "1969-12-31 19:00:00"},
      {951827696, "2000-02-29 07:34:56"},
      {1656676800, "2022-07-01 08:00:00"},
      {2147483647, "2038-01-18 22:14:07"},
      {32535215999LL, "3000-12-31 18:59:59"}},
     "Fri Friday Jul July 01 08 08 182 07 00 AM 00 26 5 26 07/01/22 08:00:00 22 2022 %",
     {{2022, 1, 1, 0, 0, 0, 1641013200},
      {2022, 7, 1, 12, 0, 0, 1656694800},
      {1970, 1, 1, 0, 0, 0, 18000},
      {2022, 13, 1, 0, 0, 0, 1672549200},
      {2024, 3, 0, 0, 0, 0, 1709182800},
      {2022, 11, 6, 1, 30, 0, 1667716200},
      {2022, 3, 13, 2, 30, 0, 1647156600}}},
    {"UTC",
     {{0, "1970-01-01 00:00:00"},
      {951827696, "2000-02-29 12:34:56"},
      {1656676800, "2022-07-01 12:00:00"},
      {2147483647, "2038-01-19 03:14:07"},
      {32535215999LL, "3000-12-31 23:59:59"}},
     "Fri Friday Jul July 01 12 12 182 07 00 PM 00 26 5 26 07/01/22 12:00:00 22 2022 %",
     {{2022, 1, 1, 0, 0, 0, 1640995200},
      {2022, 7, 1, 12, 0, 0, 1656676800},
      {1970, 1, 1, 0, 0, 0, 0},
      {2022, 13, 1, 0, 0, 0, 1672531200},
      {2024, 3, 0, 0, 0, 0, 1709164800},
      {2022, 11, 6, 1, 30, 0, 1667698200},
      {2022, 3, 13, 2, 30, 0, 1647138600}}},
};

const ZoneCases* CurrentZone() {
  const char* tz = std::getenv("TZ");
  if (tz == nullptr) return nullptr;
  for (const ZoneCases& zone : kZones) {
    if (std::strcmp(zone.tz, tz) == 0) return &zone;
  }
  return nullptr;
}

std::wstring Widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

TEST(LocalTime, FormatDateTimeMatchesPython) {
  const ZoneCases* zone = CurrentZone();
  if (zone == nullptr) GTEST_SKIP() << "needs TZ=EST5EDT or TZ=UTC (see tests.cmake)";
  for (const FormatCase& row : zone->format) {
    EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d %H:%M:%S", row.t), row.text) << row.t;
    EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d %H:%M:%S", row.t), Widen(row.text)) << row.t;
  }
  const char* letters = "%a %A %b %B %d %H %I %j %m %M %p %S %U %w %W %x %X %y %Y %%";
  EXPECT_EQ(DE::FormatDateTime(letters, 1656676800), zone->letters);
  EXPECT_EQ(DE::FormatDateTime(Widen(letters).c_str(), 1656676800), Widen(zone->letters));
}

TEST(LocalTime, EncodeDateTimeReadsStandardTime) {
  const ZoneCases* zone = CurrentZone();
  if (zone == nullptr) GTEST_SKIP() << "needs TZ=EST5EDT or TZ=UTC (see tests.cmake)";
  for (const EncodeCase& row : zone->encode) {
    tm record{};
    record.tm_year = row.year;
    record.tm_mon = row.month;
    record.tm_mday = row.day;
    record.tm_hour = row.hour;
    record.tm_min = row.minute;
    record.tm_sec = row.second;
    record.tm_isdst = 1;  // ignored
    record.tm_wday = 3;   // ignored
    const tm before = record;
    EXPECT_EQ(DE::EncodeDateTime(record), row.expected) << row.year << "-" << row.month << "-" << row.day;
    EXPECT_EQ(std::memcmp(&before, &record, sizeof record), 0);
  }

  // A winter time reads back through FormatDateTime unchanged.
  tm winter{};
  winter.tm_year = 2022;
  winter.tm_mon = 1;
  winter.tm_mday = 15;
  winter.tm_hour = 10;
  winter.tm_min = 20;
  winter.tm_sec = 30;
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d %H:%M:%S", DE::EncodeDateTime(winter)), "2022-01-15 10:20:30");

  // Local dates before 1970 or after 3000 cannot be represented.
  tm early{};
  early.tm_year = 1969;
  early.tm_mon = 12;
  early.tm_mday = 31;
  early.tm_hour = 23;
  EXPECT_EQ(DE::EncodeDateTime(early), -1);
  tm late{};
  late.tm_year = 3001;
  late.tm_mon = 1;
  late.tm_mday = 1;
  EXPECT_EQ(DE::EncodeDateTime(late), -1);
}

TEST(LocalTime, MillisecondStampFollowsNow) {
  const long long system =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
          .count();
  EXPECT_LE(std::llabs(DE::Now() - system), 2);

  for (int attempt = 0; attempt < 3; ++attempt) {
    const std::string before = DE::FormatDateTime("%Y%m%d%H%M%S", DE::Now());
    const std::string stamp = DE::GetCurrentTimeWithMilliseconds();
    const std::string after = DE::FormatDateTime("%Y%m%d%H%M%S", DE::Now());
    ASSERT_EQ(stamp.size(), 17u) << stamp;
    EXPECT_EQ(stamp.find_first_not_of("0123456789"), std::string::npos) << stamp;
    // The local clock can step back an hour when daylight saving time ends; then try again.
    if (before > after) continue;
    EXPECT_LE(before, stamp.substr(0, 14));
    EXPECT_GE(after, stamp.substr(0, 14));
    return;
  }
  FAIL() << "the local clock kept moving backwards";
}

}  // namespace
