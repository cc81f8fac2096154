// Linux bindings of the date and time operations. Only Linux-specific code goes in this file.
#include "foundation/time_platform.h"

#include <time.h>
#include <cwchar>
#include <vector>

#include "platform/linux/file_time.h"

namespace DE::detail {

// The clock GetLocalSystemTime reads: glibc's time() reads the coarse clock, which can lag it by a
// tick, and then a stamp taken after Now() could name a later second.
long long CurrentTime() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<long long>(now.tv_sec);
}

bool LocalTimeOf(long long t, tm& out) {
  const time_t value = static_cast<time_t>(t);
  return localtime_r(&value, &out) != nullptr;
}

long long MakeLocalTime(tm& t) {
  // _mktime64 checks the year once months are carried into it, before days, hours and the zone
  // are applied, and then refuses results before the epoch.
  long long years = static_cast<long long>(t.tm_year) + t.tm_mon / 12;
  int month = t.tm_mon % 12;
  if (month < 0) {
    month += 12;
    --years;
  }
  if (years < 70 || years > 1100) return -1;
  t.tm_year = static_cast<int>(years);
  t.tm_mon = month;
  // glibc reads tm_isdst == 0 in summer as standard time, as the Windows run-time does.
  const time_t result = mktime(&t);
  return result < 0 ? -1 : static_cast<long long>(result);
}

void GetLocalSystemTime(SYSTEMTIME& st) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  st.wYear = static_cast<WORD>(local.tm_year + 1900);
  st.wMonth = static_cast<WORD>(local.tm_mon + 1);
  st.wDayOfWeek = static_cast<WORD>(local.tm_wday);
  st.wDay = static_cast<WORD>(local.tm_mday);
  st.wHour = static_cast<WORD>(local.tm_hour);
  st.wMinute = static_cast<WORD>(local.tm_min);
  st.wSecond = static_cast<WORD>(local.tm_sec);
  st.wMilliseconds = static_cast<WORD>(now.tv_nsec / 1000000);
}

bool SystemTimeToFileTimeChecked(const SYSTEMTIME& st, FILETIME& ft) {
  return linux_impl::SystemTimeToFileTime(st, ft);
}

bool FileTimeToSystemTimeChecked(const FILETIME& ft, SYSTEMTIME& st) {
  return linux_impl::FileTimeToSystemTime(ft, st);
}

std::size_t FormatWideTime(wchar_t* buf, std::size_t size, const wchar_t* fmt, const tm& t) {
  if (buf == nullptr || size == 0) return 0;
  // msvcrt formats into a scratch area four times the caller's size and then copies at most
  // `size` characters, leaving out the NUL when the text fills the buffer.
  std::vector<wchar_t> scratch(size * 4, L'\0');
  const std::size_t length = wcsftime(scratch.data(), scratch.size(), fmt, &t);
  const std::size_t copied = length < size ? length : size;
  wmemcpy(buf, scratch.data(), copied);
  if (copied < size) buf[copied] = L'\0';
  return copied;
}

}  // namespace DE::detail
