// How the Windows version and its display name are derived from the system's answers. Pure logic:
// the queries are passed in, so the rules run (and are tested) on every platform.
#include "foundation/os_version_detail.h"

namespace DE::detail {

namespace {

int HighWord(std::uint32_t value) { return static_cast<int>(value >> 16); }
int LowWord(std::uint32_t value) { return static_cast<int>(value & 0xFFFF); }

// GetVersionExW is subject to compatibility shims and under-reports newer releases, so the
// numbers are taken from the workstation service, else from the kernel library's resource.
void TakeUnshimmedNumbers(const WindowsVersionQueries& queries, OsVersionFields& fields) {
  int major = 0;
  int minor = 0;
  if (queries.workstationVersion(major, minor)) {
    // The workstation service reports no build number; the build stays 0.
    fields.major = major;
    fields.minor = minor;
    fields.build = 0;
    return;
  }
  std::uint32_t ms = 0;
  std::uint32_t ls = 0;
  if (queries.kernelProductVersion(ms, ls)) {
    fields.major = HighWord(ms);
    fields.minor = LowWord(ms);
    fields.build = HighWord(ls);
  } else {
    fields.major = 0;
    fields.minor = 0;
    fields.build = 0;
  }
}

}  // namespace

OsVersionFields ComputeWindowsVersion(const WindowsVersionQueries& queries) {
  OsVersionFields fields;
  WindowsVersionRecord record;
  if (queries.versionEx(record)) {
    fields.platform = 0;
    fields.major = record.major;
    fields.minor = record.minor;
    fields.build = record.build;
    fields.servicePackMajor = record.servicePackMajor;
    fields.servicePackMinor = record.servicePackMinor;
  } else {
    record = WindowsVersionRecord();
  }
  if (fields.major > 5 || (fields.major == 5 && fields.minor >= 1)) {
    fields.architecture = queries.nativeArchitecture() == kProcessorArchitectureAmd64 ? 1 : 0;
  }
  // Written without requiring major 5 for the minor test, as the library always has been.
  if (fields.major > 5 || fields.minor >= 2) {
    TakeUnshimmedNumbers(queries, fields);  // the service pack numbers of the record stay
    fields.name = L"Windows";
  }
  std::wstring name = WindowsReleaseName(fields.major, fields.minor, record.productType, fields.architecture,
                                         queries.serverR2);
  if (!name.empty()) fields.name = name;
  return fields;
}

std::wstring WindowsReleaseName(int major, int minor, int productType, int architecture, int (*serverR2)()) {
  const bool workstation = productType == kProductWorkstation;
  if (major == 5) {
    switch (minor) {
      case 0:
        return L"Windows 2000";
      case 1:
        return L"Windows XP";
      case 2:
        // 5.2 is both the x64 edition of XP and Server 2003.
        if (workstation && architecture == 1) return L"Windows XP";
        return serverR2() != 0 ? L"Windows Server 2003 R2" : L"Windows Server 2003";
      default:
        return std::wstring();
    }
  }
  if (major == 6) {
    switch (minor) {
      case 0:
        return workstation ? L"Windows Vista" : L"Windows Server 2008";
      case 1:
        return workstation ? L"Windows 7" : L"Windows Server 2008 R2";
      case 2:
        return workstation ? L"Windows 8" : L"Windows Server 2012";
      case 3:
        return workstation ? L"Windows 8.1" : L"Windows Server 2012 R2";
      case 4:
        return L"Windows 10";
      default:
        return std::wstring();
    }
  }
  return std::wstring();
}

}  // namespace DE::detail
