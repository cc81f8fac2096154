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
#include "common/platform_info.h"

namespace {

std::uint64_t FileTimeValue(const FILETIME& ft) {
  return (static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
}

FILETIME MakeFileTime(std::uint64_t value) {
  return FILETIME{static_cast<DWORD>(value & 0xFFFFFFFFULL), static_cast<DWORD>(value >> 32)};
}

SYSTEMTIME Sys(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int ms = 0) {
  return SYSTEMTIME{WORD(year), WORD(month), 0, WORD(day), WORD(hour), WORD(minute), WORD(second), WORD(ms)};
}

std::string Text(const SYSTEMTIME& st) {
  char text[80];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u dow %u", st.wYear, st.wMonth, st.wDay,
                st.wHour, st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek);
  return text;
}

// SystemTimeToTimet's time as text, or "fail" when it refuses and leaves the time untouched.
std::string ToTimet(const SYSTEMTIME& st) {
  long long t = 12345;
  const int result = DE::SystemTimeToTimet(&st, &t);
  if (result == 1) return std::to_string(t);
  return result == 0 && t == 12345 ? "fail" : "result " + std::to_string(result);
}

// UTC instants, generated with Python's datetime: t = seconds since 1970, SYSTEMTIME fields with
// the ISO weekday mod 7, FILETIME = microseconds since 1601-01-01 times 10. The 30827 row is the
// 2827 one moved by 70 whole 400-year cycles (146097 days each), beyond datetime's range.
const struct {
  long long t;
  SYSTEMTIME st;
  std::uint64_t filetime;
} kInstants[] = {
    {-11644473600LL, {1601, 1, 1, 1, 0, 0, 0, 0}, 0ULL},
    {-2147483648LL, {1901, 12, 5, 13, 20, 45, 52, 0}, 94969899520000000ULL},
    {0LL, {1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000ULL},
    {951827696LL, {2000, 2, 2, 29, 12, 34, 56, 0}, 125963012960000000ULL},
    {2147483647LL, {2038, 1, 2, 19, 3, 14, 7, 0}, 137919572470000000ULL},
    {4107542400LL, {2100, 3, 1, 1, 0, 0, 0, 0}, 157520160000000000ULL},
    {910670515199LL, {30827, 12, 5, 31, 23, 59, 59, 0}, 9223149887990000000ULL},
};

TEST(TimeConversion, KnownInstantsAgreeWithPython) {
  for (const auto& row : kInstants) {
    SCOPED_TRACE(Text(row.st));
    SYSTEMTIME input = row.st;
    input.wDayOfWeek = 9;  // ignored on input
    EXPECT_EQ(ToTimet(input), std::to_string(row.t));
    EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(row.filetime)), row.t);

    if (row.t != static_cast<std::int32_t>(row.t)) continue;  // wraps; see the next test
    SYSTEMTIME out = Sys(1, 1, 1);
    ASSERT_EQ(DE::TimetToSystemTime(row.t, &out), 1);
    EXPECT_EQ(Text(out), Text(row.st));
    EXPECT_EQ(FileTimeValue(DE::TimetToFileTime(row.t)), row.filetime);
  }
}

// Only the low 32 bits of a time_t count; FILETIME differences are signed and truncate toward 0.
TEST(TimeConversion, WrapAndTruncation) {
  EXPECT_EQ(FileTimeValue(DE::TimetToFileTime(0x100000000LL)), 116444736000000000ULL);
  // One second after 2038-01-19 03:14:07 wraps to 1901-12-13 20:45:52, a Friday.
  SYSTEMTIME st = Sys(1, 1, 1);
  ASSERT_EQ(DE::TimetToSystemTime(0x80000000LL, &st), 1);
  EXPECT_EQ(Text(st), "1901-12-13 20:45:52.000 dow 5");
  EXPECT_EQ(DE::TimetToSystemTime(0, nullptr), 0);

  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL + 9999999)), 0);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL - 1)), 0);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(116444736000000000ULL - 10000000)), -1);
  // The difference is read as signed 64-bit (values from Python, modulo 2^64).
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(0x7FFFFFFFFFFFFFFFULL)), 910692730085LL);
  EXPECT_EQ(DE::FileTimeToTimet(MakeFileTime(0xFFFFFFFFFFFFFFFFULL)), -11644473600LL);
  // Milliseconds go the same way through SystemTimeToTimet.
  EXPECT_EQ(ToTimet(Sys(1969, 12, 31, 23, 59, 59, 500)), "0");
  EXPECT_EQ(ToTimet(Sys(1969, 12, 31, 23, 59, 58, 1)), "-1");
}

TEST(TimeConversion, SystemTimeToTimetValidatesTheRecordAsWindowsDoes) {
  for (const SYSTEMTIME& st :
       {Sys(2023, 13, 1), Sys(2023, 0, 1), Sys(2023, 2, 30), Sys(2023, 4, 31), Sys(2023, 1, 0),
        Sys(1600, 12, 31, 23, 59, 59, 999), Sys(2023, 1, 1, 24), Sys(2023, 1, 1, 0, 60),
        Sys(2023, 1, 1, 0, 0, 60), Sys(2023, 1, 1, 0, 0, 0, 1000), Sys(65535, 1, 1)}) {
    EXPECT_EQ(ToTimet(st), "fail") << Text(st);
  }
  EXPECT_EQ(ToTimet(Sys(2024, 2, 29)), "1709164800");
  EXPECT_EQ(ToTimet(Sys(2023, 2, 28, 23, 59, 59, 999)), "1677628799");

  long long t = 12345;
  const SYSTEMTIME good = Sys(2024, 1, 1);
  EXPECT_EQ(DE::SystemTimeToTimet(&good, nullptr), 0);
  EXPECT_EQ(DE::SystemTimeToTimet(nullptr, &t), 0);
  EXPECT_EQ(t, 12345);

  if (test::RunningUnderWine())
    GTEST_SKIP() << "Wine accepts 29 February of every year and years after 30827";
  for (const SYSTEMTIME& st : {Sys(2023, 2, 29), Sys(2100, 2, 29), Sys(30828, 1, 1)}) {
    EXPECT_EQ(ToTimet(st), "fail") << Text(st);
  }
}

TEST(FormatDateTime, NoTimeTheHundredCharacterBufferAndTheBufferForm) {
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d", -1), "");
  // The Windows run-time has no local time before 1970 or after 3000-12-31 23:59:59 UTC.
  EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d", -86400), L"");
  EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d", 32535216000LL), "");
  EXPECT_EQ(DE::FormatDateTime(static_cast<const char*>(nullptr), 0), "");
  EXPECT_EQ(DE::FormatDateTime(static_cast<const wchar_t*>(nullptr), 0), L"");

  const long long t = 1656676800;  // 2022 in every zone
  EXPECT_EQ(DE::FormatDateTime(std::string(99, 'x').c_str(), t), std::string(99, 'x'));
  EXPECT_EQ(DE::FormatDateTime(std::wstring(99, L'x').c_str(), t), std::wstring(99, L'x'));
  // Narrow output needs room for its NUL; the wide text is whatever the buffer holds, so a
  // longer result is cut at 100 characters.
  EXPECT_EQ(DE::FormatDateTime(std::string(100, 'x').c_str(), t), "");
  EXPECT_EQ(DE::FormatDateTime(std::wstring(100, L'x').c_str(), t), std::wstring(100, L'x'));
  // The run-time formats wide text through a scratch area four times the buffer.
  EXPECT_EQ(DE::FormatDateTime(std::wstring(399, L'y').c_str(), t), std::wstring(100, L'y'));
  EXPECT_EQ(DE::FormatDateTime(std::wstring(400, L'y').c_str(), t), L"");

  // The buffer form copies with strcpy_s rules and logs when the text does not fit.
  EXPECT_EQ(DE::FormatDateTime(nullptr, 10, "%Y", t), nullptr);
  char buf[8];
  std::memset(buf, 'z', sizeof buf);
  test::LogCapture log;
  EXPECT_EQ(DE::FormatDateTime(buf, 5, "%Y", t), buf);
  EXPECT_STREQ(buf, "2022");
  EXPECT_TRUE(log.Messages().empty());
  std::memset(buf, 'z', sizeof buf);
  EXPECT_EQ(DE::FormatDateTime(buf, 4, "%Y", t), buf);
  EXPECT_EQ(buf[0], '\0');
  const std::vector<test::LoggedMessage> messages = log.Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].level, PxsLog::Level::Error);
  EXPECT_EQ(messages[0].tag, "Util");
  EXPECT_EQ(messages[0].message, "FormatDateTime fail. strcpy_s error(DE::FormatDateTime)");
}

tm Record(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  tm record{};
  record.tm_year = year;
  record.tm_mon = month;
  record.tm_mday = day;
  record.tm_hour = hour;
  record.tm_min = minute;
  record.tm_sec = second;
  return record;
}

// Local-time expectations, computed with Python's zoneinfo. EncodeDateTime reads its fields as
// standard time, so summer dates come out one hour later than the wall clock (2022-07-01 12:00
// in EST5EDT: 1656694800, where the daylight-saving reading would be 1656691200).
const long long kFormatTimes[] = {0, 32535215999LL};  // the first and last with a local time
const tm kEncodeRecords[] = {Record(2022, 1, 1),  Record(2022, 7, 1, 12), Record(1970, 1, 1),
                             Record(2022, 13, 1), Record(2024, 3, 0),     Record(2022, 3, 13, 2, 30)};
const struct ZoneCases {
  const char* tz;
  const char* format[2];  // kFormatTimes as "%Y-%m-%d %H:%M:%S"
  const char* letters;    // at 1656676800 (2022-07-01 12:00:00 UTC)
  long long encode[6];    // kEncodeRecords
} kZones[] = {
    {"EST5EDT",
     {"1969-12-31 19:00:00", "3000-12-31 18:59:59"},
     "Fri Friday Jul July 01 08 08 182 07 00 AM 00 26 5 26 07/01/22 08:00:00 22 2022 %",
     {1641013200, 1656694800, 18000, 1672549200, 1709182800, 1647156600}},
    {"UTC",
     {"1970-01-01 00:00:00", "3000-12-31 23:59:59"},
     "Fri Friday Jul July 01 12 12 182 07 00 PM 00 26 5 26 07/01/22 12:00:00 22 2022 %",
     {1640995200, 1656676800, 0, 1672531200, 1709164800, 1647138600}},
};

std::wstring Widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

TEST(LocalTime, FormatAndEncodeMatchPython) {
  const char* tz = std::getenv("TZ");
  const ZoneCases* zone = nullptr;
  for (const ZoneCases& z : kZones) {
    if (tz != nullptr && std::strcmp(z.tz, tz) == 0) zone = &z;
  }
  if (zone == nullptr) GTEST_SKIP() << "needs TZ=EST5EDT or TZ=UTC (see tests.cmake)";
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(DE::FormatDateTime("%Y-%m-%d %H:%M:%S", kFormatTimes[i]), zone->format[i]);
    EXPECT_EQ(DE::FormatDateTime(L"%Y-%m-%d %H:%M:%S", kFormatTimes[i]), Widen(zone->format[i]));
  }
  const char* letters = "%a %A %b %B %d %H %I %j %m %M %p %S %U %w %W %x %X %y %Y %%";
  EXPECT_EQ(DE::FormatDateTime(letters, 1656676800), zone->letters);
  EXPECT_EQ(DE::FormatDateTime(Widen(letters).c_str(), 1656676800), Widen(zone->letters));

  for (int i = 0; i < 6; ++i) {
    tm record = kEncodeRecords[i];
    record.tm_isdst = 1;  // ignored
    record.tm_wday = 3;   // ignored
    EXPECT_EQ(DE::EncodeDateTime(record), zone->encode[i]) << i;
  }
  // Local dates before 1970 or after 3000 cannot be represented.
  EXPECT_EQ(DE::EncodeDateTime(Record(1969, 12, 31, 23)), -1);
  EXPECT_EQ(DE::EncodeDateTime(Record(3001, 1, 1)), -1);
}

TEST(LocalTime, MillisecondStampFollowsNow) {
  const auto system = std::chrono::system_clock::now().time_since_epoch();
  EXPECT_LE(std::llabs(DE::Now() - std::chrono::duration_cast<std::chrono::seconds>(system).count()), 2);
  const std::string before = DE::FormatDateTime("%Y%m%d%H%M%S", DE::Now());
  const std::string stamp = DE::GetCurrentTimeWithMilliseconds();
  const std::string after = DE::FormatDateTime("%Y%m%d%H%M%S", DE::Now());
  ASSERT_EQ(stamp.size(), 17u) << stamp;
  EXPECT_EQ(stamp.find_first_not_of("0123456789"), std::string::npos) << stamp;
  if (before <= after) {  // else the local clock stepped back as daylight saving time ended
    EXPECT_LE(before, stamp.substr(0, 14));
    EXPECT_GE(after, stamp.substr(0, 14));
  }
}

}  // namespace
