// Windows bindings of the date and time operations. Only Windows-specific code goes in this file.
#include "foundation/time_platform.h"

#include <time.h>
#include <wchar.h>

namespace DE::detail {

long long CurrentTime() { return _time64(nullptr); }

bool LocalTimeOf(long long t, tm& out) {
  const __time64_t value = t;
  return _localtime64_s(&out, &value) == 0;
}

long long MakeLocalTime(tm& t) { return _mktime64(&t); }

void GetLocalSystemTime(SYSTEMTIME& st) { GetLocalTime(&st); }

bool SystemTimeToFileTimeChecked(const SYSTEMTIME& st, FILETIME& ft) {
  FILETIME result;
  if (SystemTimeToFileTime(&st, &result) != TRUE) return false;
  ft = result;
  return true;
}

bool FileTimeToSystemTimeChecked(const FILETIME& ft, SYSTEMTIME& st) {
  SYSTEMTIME result;
  if (!FileTimeToSystemTime(&ft, &result)) return false;
  st = result;
  return true;
}

std::size_t FormatWideTime(wchar_t* buf, std::size_t size, const wchar_t* fmt, const tm& t) {
  return wcsftime(buf, size, fmt, &t);
}

}  // namespace DE::detail
