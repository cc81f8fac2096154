// Facts about the platform a test runs on, for expectations that depend on it.
#pragma once

namespace test {

// The number of the ANSI code page in force (1252, 936, ...); 65001 for UTF-8; 0 when unknown.
int AnsiCodePage();
// True for the Windows build (natively or under Wine).
constexpr bool IsWindowsBuild() {
#if defined(_WIN32)
  return true;
#else
  return false;
#endif
}

// True for the Windows build running under Wine, whose gaps some tests skip with the reason.
bool RunningUnderWine();

// The number of open descriptors of this process (entries of /proc/self/fd); -1 on Windows.
// The same before and after an operation that leaks none.
int OpenDescriptors();

}  // namespace test
