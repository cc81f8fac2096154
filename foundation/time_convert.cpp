// Conversions between time_t, SYSTEMTIME and FILETIME, all in UTC.
#include "DETime.h"

#include <cstdint>

#include "foundation/time_platform.h"

namespace DE {
namespace {

constexpr long long kSecondsFrom1601To1970 = 11644473600LL;
constexpr long long kIntervalsPerSecond = 10000000LL;
constexpr std::uint64_t kIntervalsAt1970 = 116444736000000000ULL;
// Limit checked against t * 1000000 before the conversion; out of reach for 32-bit times.
constexpr long long kMicrosecondLimit = 0x7E624E212AC17FFFLL;

// Only the low 32 bits of t take part, sign-extended, so times after 2038-01-19 03:14:07 UTC wrap.
bool TimetToFileTimeChecked(long long t, FILETIME& ft) {
  const long long low = static_cast<std::int32_t>(static_cast<std::uint32_t>(t & 0xFFFFFFFFLL));
  if (low * 1000000LL > kMicrosecondLimit) return false;
  const auto intervals = static_cast<std::uint64_t>((low + kSecondsFrom1601To1970) * kIntervalsPerSecond);
  ft.dwLowDateTime = static_cast<DWORD>(intervals & 0xFFFFFFFFULL);
  ft.dwHighDateTime = static_cast<DWORD>(intervals >> 32);
  return true;
}

}  // namespace

int TimetToSystemTime(long long t, SYSTEMTIME* st) {
  FILETIME ft{};
  if (st == nullptr || !TimetToFileTimeChecked(t, ft)) return 0;
  return detail::FileTimeToSystemTimeChecked(ft, *st) ? 1 : 0;
}

int SystemTimeToTimet(const SYSTEMTIME* st, long long* t) {
  FILETIME ft{};
  if (st == nullptr || t == nullptr || !detail::SystemTimeToFileTimeChecked(*st, ft)) return 0;
  *t = FileTimeToTimet(ft);
  return 1;
}

long long FileTimeToTimet(const FILETIME& ft) {
  const std::uint64_t intervals = (static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
  // The difference is taken modulo 2^64 and read as signed; the division truncates toward zero.
  return static_cast<long long>(intervals - kIntervalsAt1970) / kIntervalsPerSecond;
}

FILETIME TimetToFileTime(long long t) {
  FILETIME ft{};
  if (!TimetToFileTimeChecked(t, ft)) return FILETIME{};
  return ft;
}

}  // namespace DE
