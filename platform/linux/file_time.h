// SystemTimeToFileTime and FileTimeToSystemTime for the Linux build, with Windows' rules.
//
// FILETIME counts 100 ns intervals since 1601-01-01 00:00:00 in the proleptic Gregorian calendar.
// A SYSTEMTIME is accepted only when it names a real instant of the years 1601-30827: month 1-12,
// day within its month (leap years counted), hour < 24, minute < 60, second < 60, milliseconds
// < 1000; its day of week is ignored. FILETIME values of 0x8000000000000000 and above have no
// SYSTEMTIME. Outputs are untouched on failure.
#pragma once

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

bool SystemTimeToFileTime(const SYSTEMTIME& st, FILETIME& ft);
// Fills every field, the day of week (0 = Sunday) included.
bool FileTimeToSystemTime(const FILETIME& ft, SYSTEMTIME& st);

}  // namespace DE::detail::linux_impl
