// Linux substitute for the Windows FILETIME calendar. Only Linux-specific code goes in this file.
#include "platform/linux/file_time.h"

#include <cstdint>

namespace DE::detail::linux_impl {
namespace {

constexpr std::uint64_t kIntervalsPerMillisecond = 10000;
constexpr std::uint64_t kMillisecondsPerDay = 86400000;
constexpr std::uint64_t kFirstInvalidFileTime = 0x8000000000000000ULL;

constexpr bool IsLeapYear(unsigned year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

unsigned DaysInMonth(unsigned year, unsigned month) {
  static const unsigned char kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

// Days since 0000-03-01. Years are counted from March so that the leap day ends the year; every
// 400 years hold 146097 days. Valid for years >= 1.
constexpr std::int64_t CivilDay(unsigned year, unsigned month, unsigned day) {
  const std::int64_t y = static_cast<std::int64_t>(year) - (month <= 2 ? 1 : 0);
  const std::int64_t era = y / 400;
  const std::int64_t yearOfEra = y - era * 400;
  const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
}

constexpr std::int64_t kDay1601 = CivilDay(1601, 1, 1);
static_assert(kDay1601 == 584694, "0000-03-01 to 1601-01-01");

struct CivilDate {
  unsigned year;
  unsigned month;
  unsigned day;
};

// The inverse of CivilDay for days >= 0.
CivilDate CivilFromDay(std::int64_t days) {
  const std::int64_t era = days / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const unsigned day = static_cast<unsigned>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  const unsigned month = static_cast<unsigned>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  const std::int64_t year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);
  return {static_cast<unsigned>(year), month, day};
}

bool IsValid(const SYSTEMTIME& st) {
  return st.wYear >= 1601 && st.wYear <= 30827 && st.wMonth >= 1 && st.wMonth <= 12 && st.wDay >= 1 &&
         st.wDay <= DaysInMonth(st.wYear, st.wMonth) && st.wHour < 24 && st.wMinute < 60 && st.wSecond < 60 &&
         st.wMilliseconds < 1000;
}

}  // namespace

bool SystemTimeToFileTime(const SYSTEMTIME& st, FILETIME& ft) {
  if (!IsValid(st)) return false;
  const auto days = static_cast<std::uint64_t>(CivilDay(st.wYear, st.wMonth, st.wDay) - kDay1601);
  const std::uint64_t milliseconds = days * kMillisecondsPerDay +
                                     ((st.wHour * 60ULL + st.wMinute) * 60ULL + st.wSecond) * 1000ULL +
                                     st.wMilliseconds;
  const std::uint64_t intervals = milliseconds * kIntervalsPerMillisecond;
  ft.dwLowDateTime = static_cast<DWORD>(intervals & 0xFFFFFFFFULL);
  ft.dwHighDateTime = static_cast<DWORD>(intervals >> 32);
  return true;
}

bool FileTimeToSystemTime(const FILETIME& ft, SYSTEMTIME& st) {
  const std::uint64_t intervals = (static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
  if (intervals >= kFirstInvalidFileTime) return false;
  const std::uint64_t milliseconds = intervals / kIntervalsPerMillisecond;
  const auto days = static_cast<std::int64_t>(milliseconds / kMillisecondsPerDay);
  std::uint64_t ofDay = milliseconds % kMillisecondsPerDay;
  const CivilDate date = CivilFromDay(days + kDay1601);
  st.wYear = static_cast<WORD>(date.year);
  st.wMonth = static_cast<WORD>(date.month);
  st.wDay = static_cast<WORD>(date.day);
  // 1601-01-01 was a Monday.
  st.wDayOfWeek = static_cast<WORD>((days + 1) % 7);
  st.wMilliseconds = static_cast<WORD>(ofDay % 1000);
  ofDay /= 1000;
  st.wSecond = static_cast<WORD>(ofDay % 60);
  ofDay /= 60;
  st.wMinute = static_cast<WORD>(ofDay % 60);
  st.wHour = static_cast<WORD>(ofDay / 60);
  return true;
}

}  // namespace DE::detail::linux_impl
