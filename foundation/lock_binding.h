// The platform operations under the lock classes: the critical section and the named mutex.
// Windows: the Win32 calls themselves. Linux: a recursive pthread mutex, and the shared-memory
// mutex of platform/linux/named_mutex.h. Codes are Win32 error codes on both.
#pragma once

#include <string>

#include "UtilPlatform.h"

namespace DE::detail {

// ---- Critical section (InitializeCriticalSection and kin). ----
void InitSection(CRITICAL_SECTION* section);
void DeleteSection(CRITICAL_SECTION* section);
void EnterSection(CRITICAL_SECTION* section);
void LeaveSection(CRITICAL_SECTION* section);
bool TryEnterSection(CRITICAL_SECTION* section);

// ---- Named mutex. ----
constexpr DWORD kErrorAlreadyExists = 183;   // ERROR_ALREADY_EXISTS
constexpr DWORD kMutexAllAccess = 0x1F0001;  // MUTEX_ALL_ACCESS
constexpr DWORD kInfiniteWait = 0xFFFFFFFF;  // INFINITE

enum class MutexWait { Acquired, Abandoned, TimedOut, Failed };

// CreateMutexW(attributes, not owned, name): a handle (also to an existing mutex, then *error is
// 183), or null with the Win32 code in *error. A null or empty name gives an unnamed mutex.
HANDLE CreateNamedMutex(SECURITY_ATTRIBUTES* attributes, const wchar_t* name, DWORD* error);
// OpenMutexW(access, not inheritable, name): a handle or null.
HANDLE OpenNamedMutex(DWORD access, const wchar_t* name);
// WaitForSingleObject on the mutex; a null handle fails.
MutexWait WaitNamedMutex(HANDLE mutex, DWORD timeoutMs);
// ReleaseMutex: false when the handle is null or the caller does not own the mutex.
bool ReleaseNamedMutex(HANDLE mutex);
// CloseHandle.
void CloseNamedMutex(HANDLE mutex);

}  // namespace DE::detail
