// Linux bindings of the locks: a recursive pthread mutex for the critical section and the
// shared-memory named mutex of platform/linux. Linux-only code.
#include <pthread.h>

#include <new>

#include "DELock.h"
#include "foundation/last_error.h"
#include "foundation/lock_binding.h"
#include "platform/linux/named_mutex.h"
#include "platform/linux/win32_error.h"

namespace DE {

namespace linux_impl = detail::linux_impl;

bool CreateDACL(SECURITY_ATTRIBUTES* attributes) {
  if (attributes == nullptr) return false;
  attributes->nLength = sizeof(SECURITY_ATTRIBUTES);
  attributes->bInheritHandle = FALSE;
  // The library's own descriptor: static, never freed.
  attributes->lpSecurityDescriptor =
      const_cast<linux_impl::ObjectSecurity*>(&linux_impl::SharedObjectSecurity());
  return true;
}

void FreeDACL(SECURITY_ATTRIBUTES* attributes) {
  if (attributes != nullptr) attributes->lpSecurityDescriptor = nullptr;
}

namespace detail {
namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION::Opaque),
              "the CRITICAL_SECTION stand-in must be able to hold a pthread mutex");
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION), "CRITICAL_SECTION alignment");

pthread_mutex_t* MutexIn(CRITICAL_SECTION* section) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(section->Opaque));
}

linux_impl::NamedMutex* AsMutex(HANDLE handle) { return static_cast<linux_impl::NamedMutex*>(handle); }

}  // namespace

void InitSection(CRITICAL_SECTION* section) {
  pthread_mutex_t* mutex = new (section->Opaque) pthread_mutex_t;
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);  // the owner may enter again
  pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void DeleteSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(MutexIn(section)); }
void EnterSection(CRITICAL_SECTION* section) { pthread_mutex_lock(MutexIn(section)); }
void LeaveSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(MutexIn(section)); }
bool TryEnterSection(CRITICAL_SECTION* section) { return pthread_mutex_trylock(MutexIn(section)) == 0; }

HANDLE CreateNamedMutex(SECURITY_ATTRIBUTES* attributes, const wchar_t* name, DWORD* error) {
  const linux_impl::ObjectSecurity* security =
      attributes != nullptr ? linux_impl::FindObjectSecurity(attributes->lpSecurityDescriptor) : nullptr;
  HANDLE mutex = linux_impl::CreateNamedMutex(name, security, error);
  SetLastErrorCode(*error);  // as CreateMutexW leaves it
  return mutex;
}

HANDLE OpenNamedMutex(DWORD /*access: every opener gets full access*/, const wchar_t* name) {
  DWORD error = 0;
  HANDLE mutex = linux_impl::OpenNamedMutex(name, &error);
  SetLastErrorCode(error);
  return mutex;
}

MutexWait WaitNamedMutex(HANDLE mutex, DWORD timeoutMs) {
  if (mutex == nullptr) SetLastErrorCode(linux_impl::kErrorInvalidHandle);
  switch (linux_impl::WaitNamedMutex(AsMutex(mutex), timeoutMs)) {
    case linux_impl::WaitResult::Acquired:
      return MutexWait::Acquired;
    case linux_impl::WaitResult::Abandoned:
      return MutexWait::Abandoned;
    case linux_impl::WaitResult::TimedOut:
      return MutexWait::TimedOut;
    default:
      return MutexWait::Failed;
  }
}

bool ReleaseNamedMutex(HANDLE mutex) {
  DWORD error = 0;
  if (linux_impl::ReleaseNamedMutex(AsMutex(mutex), &error)) return true;
  SetLastErrorCode(error);
  return false;
}

void CloseNamedMutex(HANDLE mutex) { linux_impl::CloseNamedMutex(AsMutex(mutex)); }

}  // namespace detail
}  // namespace DE
