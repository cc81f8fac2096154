// Locks of the foundation library: one abstract interface, an in-process lock, a system-wide
// named mutex and a scope guard.
//
// Locks are owned by a thread: the thread that took one releases it. Both lock kinds are
// recursive (the owner may lock again and then unlocks as many times). Nothing here throws or
// reports an error; objects are not copyable (a copy would share the platform object).
//
// On Linux a named mutex is a robust, process-shared pthread mutex in a POSIX shared-memory
// object; see NamedMutexLock for names, permissions and lifetime there.
#pragma once

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// The interface every lock offers. TryLock returns non-zero when the lock was taken.
class UTIL_API BaseLock {
 public:
  virtual ~BaseLock();
  virtual void Lock() = 0;
  virtual void UnLock() = 0;
  virtual int TryLock() = 0;
};

// Excludes the threads of one process. Windows: a critical section. Linux: a recursive pthread
// mutex kept inside the CRITICAL_SECTION stand-in of UtilLinuxTypes.h (opaque storage of the
// Windows x64 size and alignment), so the class has the same shape on both platforms.
class UTIL_API CommonLock : public BaseLock {
 public:
  CommonLock();
  ~CommonLock() override;
  CommonLock(const CommonLock&) = delete;
  CommonLock& operator=(const CommonLock&) = delete;

  void Lock() override;    // waits as long as it takes
  void UnLock() override;  // by the owning thread only
  int TryLock() override;  // 1 when taken at once (or already owned by this thread), else 0

 private:
  CRITICAL_SECTION section_;
};

// A mutex shared by every process that opens the same name. On Windows it is created with a
// descriptor that allows all access to authenticated users and administrators and denies it to
// guests and anonymous logons (see CreateDACL); an existing one is opened instead.
//
// A mutex whose owner ended without releasing it is "abandoned": the next waiter gets it. Lock
// counts that as acquired; TryLock returns 0 for it although the caller then owns the mutex.
//
// When the mutex can be neither created nor opened the object holds a null handle: Lock and
// TryLock fail inside the wait (TryLock returns 0, Lock returns at once, no exclusion) and UnLock
// does nothing.
//
// Linux:
// - Names. "Global\" and "Local\" (exact case) are stripped: both, and names without a prefix,
//   share one system-wide namespace (Linux has no per-session object namespace; a service and
//   the desktop programs must meet, as "Global\" gives on Windows). Any other backslash fails as
//   on Windows (no mutex). A null or empty name gives a mutex private to this object.
//   The object is "/dev/shm/util-mutex-<name>-<hash>": the name's letters, digits, '.', '_' and
//   '-' (other characters as '_', at most 64), then 16 hex digits of a 64-bit FNV-1a hash of the
//   whole UTF-8 name, so names that sanitize alike stay apart.
// - Permissions. Read and write for every local user (mode 0666, the counterpart of
//   "authenticated users"; root passes anyway, as administrators do), with POSIX ACL entries that
//   give nothing to the anonymous user and group: the kernel's overflow uid and gid (65534,
//   "nobody"/"nogroup"), which Linux uses for unauthenticated and guest access. A process running
//   as that user or group may neither create nor open a mutex, and an object owned by them is not
//   trusted (refused). Where the file system cannot store ACLs the object stays owner-only (0600).
// - Lifetime. The shared-memory object stays until it is removed by hand or the machine
//   restarts, unlike a Windows mutex, which goes with its last handle: removing it while another
//   process uses it would let a newcomer create a second, unrelated mutex under the same name.
//   It is published fully initialised (built in an unnamed file, then linked under its name), so
//   openers never see it half-made.
class UTIL_API NamedMutexLock : public BaseLock {
 public:
  explicit NamedMutexLock(const wchar_t* name);
  // Releases the mutex once (harmless when this thread does not own it) and closes the handle.
  ~NamedMutexLock() override;
  NamedMutexLock(const NamedMutexLock&) = delete;
  NamedMutexLock& operator=(const NamedMutexLock&) = delete;

  // Waits without limit; an abandoned mutex counts as acquired. The wait result is not reported.
  void Lock() override;
  // Releases one level of ownership; nothing when the handle is null or not owned.
  void UnLock() override;
  // Waits 1 ms. 1 only for a normal acquisition; 0 for a time-out, a failure and an abandoned
  // mutex (which the caller then owns and must UnLock).
  int TryLock() override;
  // The same with the given wait in milliseconds (0xFFFFFFFF: no limit).
  int TryLock(unsigned long timeoutMs);

 private:
  HANDLE handle_;
};

// Locks for the lifetime of a scope. The lock must outlive the guard.
class UTIL_API AutoLock {
 public:
  // Calls lock->Lock() (nothing for a null pointer).
  explicit AutoLock(BaseLock* lock);
  // alreadyLocked = true adopts a lock the caller holds: no Lock() now, UnLock() at the end.
  AutoLock(BaseLock* lock, bool alreadyLocked);
  // Calls UnLock() on the lock when the pointer is not null.
  virtual ~AutoLock();
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  BaseLock* lock_;
};

// Fills `attributes` (length set, handle not inheritable) with the descriptor that named mutexes
// use. Windows: the SDDL "D:(D;OICI;GA;;;BG)(D;OICI;GA;;;AN)(A;OICI;GA;;;AU)(A;OICI;GA;;;BA)"
// (deny guests and anonymous, allow authenticated users and administrators), allocated with
// LocalAlloc. Linux: a descriptor owned by the library standing for the permission model above
// (mode 0666, nothing for the overflow user and group), understood by the library's own named
// objects. Returns false for a null pointer or when the descriptor cannot be built (then
// lpSecurityDescriptor is null). Release it with FreeDACL (or LocalFree on Windows).
UTIL_API bool CreateDACL(SECURITY_ATTRIBUTES* attributes);
// Releases the descriptor CreateDACL stored and clears the pointer; null-safe.
UTIL_API void FreeDACL(SECURITY_ATTRIBUTES* attributes);

}  // namespace DE
