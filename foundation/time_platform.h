// The platform operations the date and time functions rest on. Windows binds them to the C
// run-time and kernel32 (time_platform_win.cpp); Linux gives the same results from the C library
// and its own FILETIME calendar (time_platform_linux.cpp).
//
// Local time is the process's time zone: on Windows the run-time's (its TZ variable when set, else
// the system zone), on Linux the C library's (TZ, else /etc/localtime).
#pragma once

#include <cstddef>
#include <ctime>

#include "UtilPlatform.h"

namespace DE::detail {

// _time64: the current time in seconds since 1970-01-01 UTC.
long long CurrentTime();

// _localtime64_s of a time from 1970-01-01 00:00:00 to 3000-12-31 23:59:59 UTC (the caller keeps
// it in that range); false on failure, out is then unspecified.
bool LocalTimeOf(long long t, tm& out);

// _mktime64 of a local calendar record (normalised in place): tm_isdst 0 means standard time,
// positive daylight time, negative "find out". -1 when the year (after carrying months) is outside
// 1970-3000 or the result falls before 1970-01-01 00:00:00 UTC.
long long MakeLocalTime(tm& t);

// GetLocalTime: the current local time, day of week and milliseconds included.
void GetLocalSystemTime(SYSTEMTIME& st);

// SystemTimeToFileTime, true only when it returns exactly TRUE. The record must be a real date of
// years 1601-30827 with hour < 24, minute < 60, second < 60, milliseconds < 1000; wDayOfWeek is
// ignored. ft is untouched on failure.
bool SystemTimeToFileTimeChecked(const SYSTEMTIME& st, FILETIME& ft);

// FileTimeToSystemTime: false for values of 0x8000000000000000 and above (st untouched);
// wDayOfWeek is computed.
bool FileTimeToSystemTimeChecked(const FILETIME& ft, SYSTEMTIME& st);

// wcsftime as the Windows run-time (msvcrt) does it: output shorter than `size` is written with
// its NUL; longer output is cut to its first `size` characters with no NUL; output of 4 * size
// characters or more, or a format the C library rejects, gives an empty string. Returns the
// number of characters written, NUL excluded.
std::size_t FormatWideTime(wchar_t* buf, std::size_t size, const wchar_t* fmt, const tm& t);

}  // namespace DE::detail
