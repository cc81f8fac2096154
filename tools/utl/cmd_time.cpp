// Time commands: the current time, formatting, and conversions between time_t, FILETIME and
// SYSTEMTIME.
#include <cinttypes>
#include <cstdio>

#include "DEString.h"
#include "DETime.h"
#include "command.h"

namespace utl {
namespace {

bool ParseTime(const std::string& text, long long& t) {
  const long long missing = static_cast<long long>(0x7FFFFFFFFFFFFFFFLL);
  t = DE::StringToInt64Def(text, missing);
  return t != missing;
}

std::string SystemTimeText(const SYSTEMTIME& st) {
  return DE::FormatString("%04u-%02u-%02u %02u:%02u:%02u.%03u (day of week %u)", st.wYear, st.wMonth, st.wDay,
                          st.wHour, st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek);
}

int Now(const std::vector<std::string>&) {
  const long long now = DE::Now();
  PrintLine("time_t      " + std::to_string(now));
  PrintLine("local       " + DE::FormatDateTime("%Y-%m-%d %H:%M:%S", now));
  PrintLine("with ms     " + DE::GetCurrentTimeWithMilliseconds());
  const FILETIME ft = DE::TimetToFileTime(now);
  PrintLine("FILETIME    " +
            std::to_string((static_cast<unsigned long long>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime));
  return 0;
}

int Format(const std::vector<std::string>& args) {
  long long t = 0;
  if (args.size() == 2 && !ParseTime(args[1], t))
    return UsageError("time-format", "not a time_t: '" + args[1] + "'");
  if (args.empty() || args.size() > 2) return UsageError("time-format", "expects a format");
  const std::string text = DE::FormatDateTime(args[0].c_str(), args.size() == 2 ? t : DE::Now());
  if (text.empty()) return Failure("the time cannot be formatted (no local time, or 100 characters or more)");
  PrintLine(text);
  return 0;
}

int Convert(const std::vector<std::string>& args) {
  if (args.size() != 2) return UsageError("time-convert", "expects a kind and a value");
  long long value = 0;
  if (!ParseTime(args[1], value)) return UsageError("time-convert", "not a number: '" + args[1] + "'");
  if (args[0] == "timet") {
    const FILETIME ft = DE::TimetToFileTime(value);
    SYSTEMTIME st{};
    PrintLine("FILETIME    " +
              std::to_string((static_cast<unsigned long long>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime));
    if (DE::TimetToSystemTime(value, &st) == 0) return Failure("no SYSTEMTIME for " + args[1]);
    PrintLine("SYSTEMTIME  " + SystemTimeText(st) + " UTC");
    return 0;
  }
  if (args[0] == "filetime") {
    FILETIME ft;
    ft.dwLowDateTime = static_cast<DWORD>(static_cast<unsigned long long>(value) & 0xFFFFFFFFu);
    ft.dwHighDateTime = static_cast<DWORD>(static_cast<unsigned long long>(value) >> 32);
    PrintLine("time_t      " + std::to_string(DE::FileTimeToTimet(ft)));
    return 0;
  }
  return UsageError("time-convert", "the kind is timet or filetime, not '" + args[0] + "'");
}

int Encode(const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 2) return UsageError("time-encode", "expects a date");
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (std::sscanf(args[0].c_str(), "%d-%d-%d", &year, &month, &day) != 3 ||
      (args.size() == 2 && std::sscanf(args[1].c_str(), "%d:%d:%d", &hour, &minute, &second) != 3)) {
    return UsageError("time-encode", "expects YYYY-MM-DD [HH:MM:SS]");
  }
  tm fields{};
  fields.tm_year = year;
  fields.tm_mon = month;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  const long long t = DE::EncodeDateTime(fields);
  if (t == -1) return Failure("the local time cannot be represented");
  PrintLine(std::to_string(t));
  return 0;
}

UTL_COMMAND("time-now", "", "the current time in every form", Now);
UTL_COMMAND("time-format", "<strftime format> [time_t]", "format a time (default now) in local time", Format);
UTL_COMMAND("time-convert", "timet|filetime <value>", "convert a time_t or a FILETIME count", Convert);
UTL_COMMAND("time-encode", "YYYY-MM-DD [HH:MM:SS]", "time_t of a local standard time", Encode);

}  // namespace
}  // namespace utl
