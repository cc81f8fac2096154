// Date and time utilities of the foundation library.
//
// time_t values are signed 64-bit seconds since 1970-01-01 UTC (-1: no time). FILETIME counts
// 100 ns intervals since 1601-01-01 UTC. Formatting works in local time; the conversions between
// time_t, SYSTEMTIME and FILETIME work in UTC. Nothing here throws.
//
// Local time is the process's time zone. Windows: the C run-time's, which reads TZ itself when it
// is set ("EST5EDT"-style, daylight time by US rules) and otherwise the system zone. Linux: the C
// library's (TZ, else /etc/localtime). Both builds keep the Windows run-time's range: no local
// time before 1970-01-01 00:00:00 UTC or after 3000-12-31 23:59:59 UTC.
//
// Format letters: %a %A %b %B %d %H %I %j %m %M %p %S %U %w %W %x %X %y %Y %% give the same text
// on both builds (in the "C" locale). %c, %z and %Z differ (the Windows run-time writes %c as
// "07/01/22 08:00:00" and %z as the zone's name), the '#' flag is Windows-only, and letters the
// Windows run-time does not know (%e %F %T %D %R %n %t %u %V %G %g %C %h %r %s ...) make it
// return nothing there, so the result is "". The wide form converts its format to the ANSI code
// page on Windows: keep wide formats to ASCII.
#pragma once

#include <ctime>
#include <string>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// The current time as time_t.
UTIL_API long long Now();

// strftime of the local time of t into at most 99 characters; "" for t == -1, a failed local-time
// conversion, or output that is empty or does not fit.
UTIL_API std::string FormatDateTime(const char* fmt, long long t);
// The same with wcsftime into 100 wide characters, taken up to the first NUL: longer output is cut
// to its first 100 characters (the Windows run-time leaves no NUL then), output of 400
// characters or more gives "".
UTIL_API std::wstring FormatDateTime(const wchar_t* fmt, long long t);
// Copies the narrow result into buf with strcpy_s rules (when it does not fit, buf[0] is set to
// NUL if size > 0 and an error is logged); returns buf, or null for a null buf.
UTIL_API char* FormatDateTime(char* buf, int size, const char* fmt, long long t);

// The local time as 17 digits: year, month, day, hour, minute, second, milliseconds.
UTIL_API std::string GetCurrentTimeWithMilliseconds();

// Local time from a record whose tm_year holds the full year (2022) and tm_mon 1-12; the
// daylight-saving flag is taken as 0 (standard time, even in summer). Out-of-range fields carry
// over as in mktime. -1 when the year (after carrying months) is outside 1970-3000 or the time
// falls before 1970-01-01 00:00:00 UTC.
UTIL_API long long EncodeDateTime(const tm& t);

// Only the low 32 bits of t count (sign-extended), so times after 2038-01-19 03:14:07 wrap to
// 1901. Non-zero on success; st is untouched on failure; 0 for a null st.
UTIL_API int TimetToSystemTime(long long t, SYSTEMTIME* st);
// 1 and *t set on success; 0 (t untouched) for a null st or t, or a record that is not a real
// date and time of the years 1601-30827. The day of week is ignored.
UTIL_API int SystemTimeToTimet(const SYSTEMTIME* st, long long* t);
// (ft - 116444736000000000) / 10000000, truncating toward zero.
UTIL_API long long FileTimeToTimet(const FILETIME& ft);
// (t + 11644473600) * 10000000 from the low 32 bits of t, sign-extended.
UTIL_API FILETIME TimetToFileTime(long long t);

}  // namespace DE
