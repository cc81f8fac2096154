// Date and time utilities of the foundation library.
//
// time_t values are signed 64-bit seconds since 1970-01-01 UTC (-1: no time). FILETIME counts
// 100 ns intervals since 1601-01-01 UTC. Formatting works in local time; the conversions between
// time_t, SYSTEMTIME and FILETIME work in UTC. Nothing here throws.
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
// The same with wcsftime; the output is taken up to its first NUL.
UTIL_API std::wstring FormatDateTime(const wchar_t* fmt, long long t);
// Copies the narrow result into buf (logging an error when it does not fit); returns buf, or null
// for a null buf.
UTIL_API char* FormatDateTime(char* buf, int size, const char* fmt, long long t);

// The local time as 17 digits: year, month, day, hour, minute, second, milliseconds.
UTIL_API std::string GetCurrentTimeWithMilliseconds();

// Local time from a record whose tm_year holds the full year (2022) and tm_mon 1-12; the
// daylight-saving flag is taken as 0 (standard time). -1 when it cannot be represented.
UTIL_API long long EncodeDateTime(const tm& t);

// Only the low 32 bits of t count (sign-extended), so times after 2038-01-19 wrap.
// Non-zero on success; st is untouched on failure.
UTIL_API int TimetToSystemTime(long long t, SYSTEMTIME* st);
// 1 and *t set on success; 0 for a null t or an invalid record.
UTIL_API int SystemTimeToTimet(const SYSTEMTIME* st, long long* t);
// (ft - 116444736000000000) / 10000000, truncating toward zero.
UTIL_API long long FileTimeToTimet(const FILETIME& ft);
// (t + 11644473600) * 10000000 from the low 32 bits of t, sign-extended.
UTIL_API FILETIME TimetToFileTime(long long t);

}  // namespace DE
