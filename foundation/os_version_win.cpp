// Windows queries behind OSVersion. Only Windows-specific code goes in this file.
#include "UtilPlatform.h"

#include <lm.h>
#include <winver.h>

#include <memory>
#include <new>

#include "foundation/os_version_detail.h"

namespace DE::detail {

namespace {

bool VersionEx(WindowsVersionRecord& record) {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof(info);  // the extended record, 284 bytes
  if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info))) return false;
  record.major = static_cast<int>(info.dwMajorVersion);
  record.minor = static_cast<int>(info.dwMinorVersion);
  record.build = static_cast<int>(info.dwBuildNumber);
  record.servicePackMajor = info.wServicePackMajor;
  record.servicePackMinor = info.wServicePackMinor;
  record.productType = info.wProductType;
  return true;
}

int NativeArchitecture() {
  SYSTEM_INFO info = {};
  GetNativeSystemInfo(&info);
  return info.wProcessorArchitecture;
}

bool WorkstationVersion(int& major, int& minor) {
  LPBYTE buffer = nullptr;
  const NET_API_STATUS status = NetWkstaGetInfo(nullptr, 100, &buffer);
  const bool ok = status == NERR_Success && buffer != nullptr;
  if (ok) {
    const WKSTA_INFO_100* info = reinterpret_cast<const WKSTA_INFO_100*>(buffer);
    major = static_cast<int>(info->wki100_ver_major);
    minor = static_cast<int>(info->wki100_ver_minor);
  }
  if (buffer != nullptr) NetApiBufferFree(buffer);
  return ok;
}

bool KernelProductVersion(std::uint32_t& ms, std::uint32_t& ls) {
  const wchar_t* const file = L"kernel32.dll";
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(file, &ignored);
  if (size == 0) return false;
  std::unique_ptr<BYTE[]> data(new (std::nothrow) BYTE[size]);
  if (!data || !GetFileVersionInfoW(file, 0, size, data.get())) return false;
  void* value = nullptr;
  UINT length = 0;
  if (!VerQueryValueW(data.get(), L"\\", &value, &length) || value == nullptr ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    return false;
  }
  const VS_FIXEDFILEINFO* info = static_cast<const VS_FIXEDFILEINFO*>(value);
  ms = info->dwProductVersionMS;
  ls = info->dwProductVersionLS;
  return true;
}

int ServerR2() { return GetSystemMetrics(SM_SERVERR2); }

}  // namespace

OsVersionFields QueryOsVersion() {
  const WindowsVersionQueries queries = {VersionEx, NativeArchitecture, WorkstationVersion,
                                         KernelProductVersion, ServerR2};
  return ComputeWindowsVersion(queries);
}

}  // namespace DE::detail
