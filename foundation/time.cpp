// The current time, local-time formatting and EncodeDateTime.
#include "DETime.h"

#include <cstdio>
#include <ctime>

#include "PxsLog.h"
#include "foundation/safe_copy.h"
#include "foundation/time_platform.h"

namespace DE {
namespace {

// Both formatters write into a zeroed buffer of this many characters.
constexpr std::size_t kFormatBufferSize = 100;

// The Windows run-time has no local time before 1970 or after 3000-12-31 23:59:59 UTC (-1, "no
// time", is among those). Both builds refuse them here, once: the run-time would refuse them too,
// but some run-times report them through the invalid-parameter handler, which may end the process.
constexpr long long kMaxLocalTime = 32535215999LL;

bool LocalTimeForFormat(long long t, tm& local) {
  return t >= 0 && t <= kMaxLocalTime && detail::LocalTimeOf(t, local);
}

}  // namespace

long long Now() { return detail::CurrentTime(); }

std::string FormatDateTime(const char* fmt, long long t) {
  tm local{};
  if (fmt == nullptr || !LocalTimeForFormat(t, local)) return std::string();
  char buf[kFormatBufferSize] = {};
  if (std::strftime(buf, sizeof buf, fmt, &local) == 0) return std::string();
  return std::string(buf);
}

std::wstring FormatDateTime(const wchar_t* fmt, long long t) {
  tm local{};
  if (fmt == nullptr || !LocalTimeForFormat(t, local)) return std::wstring();
  wchar_t buf[kFormatBufferSize] = {};
  // The count is not used: the text runs to the first NUL, or fills the buffer when the run-time
  // cut it off without one.
  detail::FormatWideTime(buf, kFormatBufferSize, fmt, local);
  std::size_t length = 0;
  while (length < kFormatBufferSize && buf[length] != L'\0') ++length;
  return std::wstring(buf, length);
}

char* FormatDateTime(char* buf, int size, const char* fmt, long long t) {
  if (buf == nullptr) return nullptr;
  if (!detail::SafeCopy(buf, size, FormatDateTime(fmt, t))) {
    PXSLOGE("Util", "FormatDateTime fail. strcpy_s error(DE::FormatDateTime)");
  }
  return buf;
}

std::string GetCurrentTimeWithMilliseconds() {
  SYSTEMTIME st{};
  detail::GetLocalSystemTime(st);
  char text[64] = {};
  std::snprintf(text, sizeof text, "%4d%02d%02d%02d%02d%02d%03d", st.wYear, st.wMonth, st.wDay, st.wHour,
                st.wMinute, st.wSecond, st.wMilliseconds);
  return std::string(text);
}

long long EncodeDateTime(const tm& t) {
  // The record holds the full year and a 1-based month; the daylight flag 0 asks for standard
  // time even in summer.
  tm local{};
  local.tm_year = t.tm_year - 1900;
  local.tm_mon = t.tm_mon - 1;
  local.tm_mday = t.tm_mday;
  local.tm_hour = t.tm_hour;
  local.tm_min = t.tm_min;
  local.tm_sec = t.tm_sec;
  local.tm_wday = 0;
  local.tm_yday = 0;
  local.tm_isdst = 0;
  return detail::MakeLocalTime(local);
}

}  // namespace DE
