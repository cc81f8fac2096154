// Internals of OSVersion: the plain field record, the Windows version algorithm over replaceable
// system queries, and the query each platform binding provides.
#pragma once

#include <cstdint>
#include <string>

namespace DE::detail {

// OSVersion's fields, as the platform queries fill them.
struct OsVersionFields {
  int architecture = 0;  // 1 for x64
  int build = 0;
  int major = 0;
  int minor = 0;
  std::wstring name;
  int platform = 0;
  int servicePackMajor = 0;
  int servicePackMinor = 0;
};

// What GetVersionExW reports in its extended record.
struct WindowsVersionRecord {
  int major = 0;
  int minor = 0;
  int build = 0;
  int servicePackMajor = 0;
  int servicePackMinor = 0;
  int productType = 0;  // 1 workstation, 2 domain controller, 3 server
};

constexpr int kProductWorkstation = 1;
constexpr int kProcessorArchitectureAmd64 = 9;

// The Windows queries the version algorithm makes; the binding passes the real calls, tests
// pass their own. Each returns false when the query fails.
struct WindowsVersionQueries {
  bool (*versionEx)(WindowsVersionRecord& record);                     // GetVersionExW
  int (*nativeArchitecture)();                                         // GetNativeSystemInfo
  bool (*workstationVersion)(int& major, int& minor);                  // NetWkstaGetInfo level 100
  bool (*kernelProductVersion)(std::uint32_t& ms, std::uint32_t& ls);  // kernel32.dll resource
  int (*serverR2)();                                                   // GetSystemMetrics(SM_SERVERR2)
};

// The fields of a Windows system, from its queries.
OsVersionFields ComputeWindowsVersion(const WindowsVersionQueries& queries);

// The display name of a Windows release, "" when the release has none of its own. `serverR2` is
// asked only for a 5.2 server.
std::wstring WindowsReleaseName(int major, int minor, int productType, int architecture, int (*serverR2)());

// The running system's fields (the platform binding).
OsVersionFields QueryOsVersion();

}  // namespace DE::detail
