// Windows bindings of the locks: Win32 critical sections, mutexes and SDDL. Windows-only code.
#include "DELock.h"  // <windows.h> first: sddl.h builds on it
#include "foundation/lock_binding.h"

#include <sddl.h>

namespace DE {
namespace {

// Deny guests and anonymous logons, allow authenticated users and administrators; inherited by
// objects and containers.
const wchar_t kMutexSddl[] = L"D:(D;OICI;GA;;;BG)(D;OICI;GA;;;AN)(A;OICI;GA;;;AU)(A;OICI;GA;;;BA)";

}  // namespace

bool CreateDACL(SECURITY_ATTRIBUTES* attributes) {
  if (attributes == nullptr) return false;
  attributes->nLength = sizeof(SECURITY_ATTRIBUTES);
  attributes->bInheritHandle = FALSE;
  attributes->lpSecurityDescriptor = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(kMutexSddl, SDDL_REVISION_1, &descriptor,
                                                            nullptr)) {
    return false;
  }
  attributes->lpSecurityDescriptor = descriptor;
  return true;
}

void FreeDACL(SECURITY_ATTRIBUTES* attributes) {
  if (attributes == nullptr || attributes->lpSecurityDescriptor == nullptr) return;
  LocalFree(attributes->lpSecurityDescriptor);
  attributes->lpSecurityDescriptor = nullptr;
}

namespace detail {

void InitSection(CRITICAL_SECTION* section) { InitializeCriticalSection(section); }
void DeleteSection(CRITICAL_SECTION* section) { DeleteCriticalSection(section); }
void EnterSection(CRITICAL_SECTION* section) { EnterCriticalSection(section); }
void LeaveSection(CRITICAL_SECTION* section) { LeaveCriticalSection(section); }
bool TryEnterSection(CRITICAL_SECTION* section) { return TryEnterCriticalSection(section) != FALSE; }

HANDLE CreateNamedMutex(SECURITY_ATTRIBUTES* attributes, const wchar_t* name, DWORD* error) {
  HANDLE mutex = CreateMutexW(attributes, FALSE, name);
  *error = GetLastError();
  return mutex;
}

HANDLE OpenNamedMutex(DWORD access, const wchar_t* name) { return OpenMutexW(access, FALSE, name); }

MutexWait WaitNamedMutex(HANDLE mutex, DWORD timeoutMs) {
  switch (WaitForSingleObject(mutex, timeoutMs)) {
    case WAIT_OBJECT_0:
      return MutexWait::Acquired;
    case WAIT_ABANDONED:
      return MutexWait::Abandoned;
    case WAIT_TIMEOUT:
      return MutexWait::TimedOut;
    default:
      return MutexWait::Failed;
  }
}

bool ReleaseNamedMutex(HANDLE mutex) { return mutex != nullptr && ReleaseMutex(mutex) != FALSE; }

void CloseNamedMutex(HANDLE mutex) { CloseHandle(mutex); }

}  // namespace detail
}  // namespace DE
