// The lock classes, over the platform operations of lock_binding.h.
#include "DELock.h"

#include "foundation/lock_binding.h"

namespace DE {

BaseLock::~BaseLock() = default;

// ---- CommonLock ----

CommonLock::CommonLock() : section_() { detail::InitSection(&section_); }

CommonLock::~CommonLock() { detail::DeleteSection(&section_); }

void CommonLock::Lock() { detail::EnterSection(&section_); }

void CommonLock::UnLock() { detail::LeaveSection(&section_); }

int CommonLock::TryLock() { return detail::TryEnterSection(&section_) ? 1 : 0; }

// ---- NamedMutexLock ----

NamedMutexLock::NamedMutexLock(const wchar_t* name) : handle_(nullptr) {
  SECURITY_ATTRIBUTES attributes = {};
  CreateDACL(&attributes);  // without it the mutex gets the default descriptor
  DWORD error = 0;
  handle_ = detail::CreateNamedMutex(&attributes, name, &error);
  FreeDACL(&attributes);
  if (handle_ == nullptr && error == detail::kErrorAlreadyExists) {
    handle_ = detail::OpenNamedMutex(detail::kMutexAllAccess, name);
  }
}

NamedMutexLock::~NamedMutexLock() {
  if (handle_ == nullptr) return;
  // Unconditional, as the owner may be another thread: the release then simply fails.
  detail::ReleaseNamedMutex(handle_);
  detail::CloseNamedMutex(handle_);
  handle_ = nullptr;
}

void NamedMutexLock::Lock() { detail::WaitNamedMutex(handle_, detail::kInfiniteWait); }

void NamedMutexLock::UnLock() {
  if (handle_ != nullptr) detail::ReleaseNamedMutex(handle_);
}

int NamedMutexLock::TryLock() { return TryLock(1); }

int NamedMutexLock::TryLock(unsigned long timeoutMs) {
  // An abandoned mutex is ours now, yet reported as not taken.
  const detail::MutexWait result = detail::WaitNamedMutex(handle_, static_cast<DWORD>(timeoutMs));
  return result == detail::MutexWait::Acquired ? 1 : 0;
}

// ---- AutoLock ----

AutoLock::AutoLock(BaseLock* lock) : AutoLock(lock, false) {}

AutoLock::AutoLock(BaseLock* lock, bool alreadyLocked) : lock_(lock) {
  if (lock_ != nullptr && !alreadyLocked) lock_->Lock();
}

AutoLock::~AutoLock() {
  if (lock_ != nullptr) lock_->UnLock();
}

}  // namespace DE
