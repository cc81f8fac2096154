// The Linux substitute for a Windows named mutex: a robust, recursive, process-shared pthread
// mutex in a POSIX shared-memory object, with the Windows meanings and Win32 error codes.
//
// - Ownership is per thread and recursive: the owner may wait again and must release as often.
// - When the owning thread ends without releasing (process exit or crash included), the next
//   waiter gets the mutex with WaitResult::Abandoned (WAIT_ABANDONED) and owns it.
// - Names: "Global\" and "Local\" (exact case) are stripped and both map to one system-wide
//   namespace, as do names without a prefix; another backslash fails with ERROR_PATH_NOT_FOUND
//   (3), as on Windows. A null or empty name gives a mutex private to its handle.
//   Object name: "/util-mutex-<sanitized name, at most 64 of [A-Za-z0-9._-], others '_'>-<16 hex
//   digits of the 64-bit FNV-1a hash of the UTF-8 name>".
// - Permissions: see object_security.h. The creator's descriptor decides; openers get full access.
// - Creation is race-free between processes: the object is built and initialised as an unnamed
//   file in /dev/shm (O_TMPFILE) and only then linked under its name; the loser of a race opens
//   the winner's object. An opener never sees a half-made mutex.
// - Lifetime: the object is never unlinked by the library (a Windows mutex goes with its last
//   handle, but unlinking here while others use it would let a newcomer create a second mutex
//   under the same name). It stays until removed by hand or the machine restarts.
// - One mapping per object per process, shared by every handle to it; the mapping is kept while
//   a thread of this process may still own the mutex, so the pthread robust list never points
//   into unmapped memory.
#pragma once

#include <string>

#include "UtilPlatform.h"
#include "platform/linux/object_security.h"

namespace DE::detail::linux_impl {

constexpr DWORD kWaitForever = 0xFFFFFFFF;

enum class WaitResult { Acquired, Abandoned, TimedOut, Failed };

struct NamedMutex;  // one open handle

// The shared-memory object name for a mutex name ("/util-mutex-..."); false with
// ERROR_PATH_NOT_FOUND for a name Windows would refuse. `name` must not be empty.
bool SharedMutexObjectName(const std::wstring& name, std::string* objectName, DWORD* error);

// Opens the mutex `name`, creating it with `security` (null: owner only) when it does not exist.
// Returns the handle and sets *error to 0, or to ERROR_ALREADY_EXISTS (183) when it existed;
// null with a Win32 code: ERROR_ACCESS_DENIED (5) for an anonymous caller or object,
// ERROR_PATH_NOT_FOUND (3) for a bad name, ERROR_INVALID_HANDLE (6) for an object that is not a
// mutex of this layout, or the code of the failing system call.
NamedMutex* CreateNamedMutex(const wchar_t* name, const ObjectSecurity* security, DWORD* error);
// Opens an existing mutex; null with ERROR_FILE_NOT_FOUND (2) when there is none (and the codes
// above).
NamedMutex* OpenNamedMutex(const wchar_t* name, DWORD* error);
// Waits up to timeoutMs (kWaitForever: no limit; CLOCK_REALTIME deadline). Null handle: Failed.
WaitResult WaitNamedMutex(NamedMutex* mutex, DWORD timeoutMs);
// Releases one level of ownership; false with ERROR_NOT_OWNER (288) when the calling thread does
// not own it, ERROR_INVALID_HANDLE (6) for a null handle.
bool ReleaseNamedMutex(NamedMutex* mutex, DWORD* error);
// Closes the handle (null-safe). Ownership is not released.
void CloseNamedMutex(NamedMutex* mutex);

}  // namespace DE::detail::linux_impl
