// Windows bindings of the process and token helpers (WOW64, Toolhelp32, tokens). Windows-only code.
#include "DESystem.h"  // <windows.h> first: tlhelp32.h builds on it
#include "foundation/kernel_handle_win.h"
#include "foundation/system_helpers_binding.h"

#include <tlhelp32.h>

namespace DE {
namespace {

using detail::KernelHandle;

}  // namespace

bool IsWin64OS() {
#if defined(_WIN64)
  return true;
#else
  BOOL wow64 = FALSE;
  return IsWow64Process(GetCurrentProcess(), &wow64) && wow64;
#endif
}

bool GetProcessList(std::map<DWORD, std::wstring>& processes) {
  processes.clear();
  const KernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return false;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  if (!Process32FirstW(snapshot.Get(), &entry)) return false;
  do {
    processes[entry.th32ProcessID] = entry.szExeFile;
  } while (Process32NextW(snapshot.Get(), &entry));
  return true;
}

bool IsRunasAdmin() {
  SID_IDENTIFIER_AUTHORITY ntAuthority = SECURITY_NT_AUTHORITY;
  PSID administrators = nullptr;
  if (!AllocateAndInitializeSid(&ntAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0,
                                0, 0, 0, 0, &administrators)) {
    return false;
  }
  BOOL member = FALSE;
  // Checks the effective token: under UAC the group is enabled only in an elevated one.
  if (!CheckTokenMembership(nullptr, administrators, &member)) member = FALSE;
  FreeSid(administrators);
  return member != FALSE;
}

namespace detail {

DWORD AdjustPrivilege(const wchar_t* privilege, bool enable) {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token))
    return GetLastError();
  const KernelHandle tokenOwner(token);
  TOKEN_PRIVILEGES privileges = {};
  privileges.PrivilegeCount = 1;
  privileges.Privileges[0].Attributes = enable ? SE_PRIVILEGE_ENABLED : 0;
  if (!LookupPrivilegeValueW(nullptr, privilege, &privileges.Privileges[0].Luid)) return GetLastError();
  if (!AdjustTokenPrivileges(token, FALSE, &privileges, sizeof(privileges), nullptr, nullptr))
    return GetLastError();
  // Success with ERROR_NOT_ALL_ASSIGNED means the token does not hold the privilege.
  return GetLastError();
}

}  // namespace detail
}  // namespace DE
