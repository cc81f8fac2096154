// Named mutexes for Linux in POSIX shared memory. Only Linux-specific code goes in this file.
#include "platform/linux/named_mutex.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cwchar>
#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "platform/linux/descriptor.h"
#include "platform/linux/system_calls.h"
#include "platform/linux/utf8_codec.h"
#include "platform/linux/win32_error.h"

namespace DE::detail::linux_impl {
namespace {

const char kShmDirectory[] = "/dev/shm";  // where glibc's shm_open keeps its objects
const char kObjectPrefix[] = "/util-mutex-";
const std::size_t kReadableNameLength = 64;
// A racing creator that loses the link, then finds the winner's object gone, tries again.
const int kOpenAttempts = 16;

const std::uint32_t kBlockMagic = 0x58544D55;  // "UMTX"
// Layout version and mutex size: a process with another pthread layout refuses the object.
const std::uint32_t kBlockVersion = (1u << 16) | static_cast<std::uint32_t>(sizeof(pthread_mutex_t));

struct SharedBlock {
  std::uint32_t magic;
  std::uint32_t version;
  pthread_mutex_t mutex;
};

// One mutex as this process sees it: a mapped shared object (or, unnamed, a heap block), shared
// by all the handles to it here.
struct Mapping {
  SharedBlock* block = nullptr;
  bool shared = false;
  dev_t device = 0;
  ino_t inode = 0;
  std::size_t handles = 0;     // guarded by the registry's lock
  std::atomic<long> owned{0};  // acquisitions minus releases by threads of this process
};

std::uint64_t Fnv1a64(const std::string& bytes) {
  std::uint64_t hash = 0xcbf29ce484222325ull;
  for (unsigned char byte : bytes) {
    hash ^= byte;
    hash *= 0x100000001b3ull;
  }
  return hash;
}

std::string Hex16(std::uint64_t value) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text(16, '0');
  for (int i = 15; i >= 0; --i, value >>= 4) text[static_cast<std::size_t>(i)] = kDigits[value & 0xF];
  return text;
}

bool IsPortableNameChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
         c == '-';
}

bool StartsWith(const std::wstring& text, const std::wstring& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

bool InitMutex(pthread_mutex_t* mutex, bool processShared) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  // Windows mutexes are recursive for their owner and survive a dead owner as "abandoned".
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutexattr_setpshared(&attributes, processShared ? PTHREAD_PROCESS_SHARED : PTHREAD_PROCESS_PRIVATE);
  const int result = pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return result == 0;
}

// Sizes the unnamed file and writes an initialised block into it.
bool InitializeObject(int fd) {
  if (Sys().ftruncate(fd, sizeof(SharedBlock)) != 0) return false;
  void* memory = Sys().mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (memory == MAP_FAILED) return false;
  SharedBlock* block = new (memory) SharedBlock;
  const bool initialized = InitMutex(&block->mutex, true);
  block->magic = kBlockMagic;
  block->version = kBlockVersion;
  Sys().munmap(memory, sizeof(SharedBlock));
  if (!initialized) errno = ENOMEM;
  return initialized;
}

// Builds the object as an unnamed file and links it under `objectName`, so nobody ever opens it
// half-made. Returns the open file, or none with errno (EEXIST: another process published first).
Descriptor PublishObject(const std::string& objectName, const ObjectSecurity* security) {
  Descriptor fd(Sys().open(kShmDirectory, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (!fd) return fd;
  const std::string from = "/proc/self/fd/" + std::to_string(fd.Get());
  const std::string to = kShmDirectory + objectName;
  if (!ApplyObjectSecurity(fd.Get(), security) || !InitializeObject(fd.Get()) ||
      Sys().linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) != 0) {
    fd.Reset();  // keeps errno
  }
  return fd;
}

// The process-wide table of mapped objects, keyed by file identity so that every handle to one
// object shares one mapping. Never destroyed: handles may still close while the process exits.
class MappingRegistry {
 public:
  static MappingRegistry& Get() {
    static MappingRegistry* registry = new MappingRegistry;
    return *registry;
  }

  // A handle to the object open on `fd` (which the caller still closes), or null with *error.
  NamedMutex* Attach(int fd, DWORD* error);
  // A handle to a new unnamed mutex, or null with *error.
  NamedMutex* AttachPrivate(DWORD* error);
  // Drops one handle; the mapping goes with the last one unless this process may still own it.
  void Detach(Mapping* mapping);

 private:
  NamedMutex* NewHandle(Mapping* mapping, DWORD* error);

  std::mutex lock_;
  std::map<std::pair<dev_t, ino_t>, Mapping*> mappings_;
};

}  // namespace

struct NamedMutex {
  Mapping* mapping;
};

namespace {

NamedMutex* MappingRegistry::NewHandle(Mapping* mapping, DWORD* error) {
  NamedMutex* handle = new (std::nothrow) NamedMutex{mapping};
  if (handle == nullptr) {
    *error = kErrorNotEnoughMemory;
    return nullptr;
  }
  ++mapping->handles;
  return handle;
}

NamedMutex* MappingRegistry::Attach(int fd, DWORD* error) {
  struct stat info;
  if (Sys().fstat(fd, &info) != 0) {
    *error = Win32ErrorFromErrno(errno);
    return nullptr;
  }
  if (!S_ISREG(info.st_mode) || info.st_size < static_cast<off_t>(sizeof(SharedBlock))) {
    *error = kErrorInvalidHandle;
    return nullptr;
  }
  if (OwnedByAnonymous(info)) {
    *error = kErrorAccessDenied;
    return nullptr;
  }
  std::lock_guard<std::mutex> guard(lock_);
  const auto key = std::make_pair(info.st_dev, info.st_ino);
  const auto found = mappings_.find(key);
  if (found != mappings_.end()) return NewHandle(found->second, error);

  void* memory = Sys().mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (memory == MAP_FAILED) {
    *error = Win32ErrorFromErrno(errno);
    return nullptr;
  }
  SharedBlock* block = static_cast<SharedBlock*>(memory);
  const bool ourLayout = block->magic == kBlockMagic && block->version == kBlockVersion;
  Mapping* mapping = ourLayout ? new (std::nothrow) Mapping : nullptr;
  if (mapping == nullptr) {
    *error = ourLayout ? kErrorNotEnoughMemory : kErrorInvalidHandle;
    Sys().munmap(memory, sizeof(SharedBlock));
    return nullptr;
  }
  mapping->block = block;
  mapping->shared = true;
  mapping->device = info.st_dev;
  mapping->inode = info.st_ino;
  NamedMutex* handle = NewHandle(mapping, error);
  if (handle == nullptr) {
    Sys().munmap(memory, sizeof(SharedBlock));
    delete mapping;
    return nullptr;
  }
  mappings_[key] = mapping;
  return handle;
}

NamedMutex* MappingRegistry::AttachPrivate(DWORD* error) {
  Mapping* mapping = new (std::nothrow) Mapping;
  SharedBlock* block = mapping != nullptr ? new (std::nothrow) SharedBlock : nullptr;
  if (block == nullptr || !InitMutex(&block->mutex, false)) {
    delete block;
    delete mapping;
    *error = kErrorNotEnoughMemory;
    return nullptr;
  }
  mapping->block = block;
  std::lock_guard<std::mutex> guard(lock_);
  NamedMutex* handle = NewHandle(mapping, error);
  if (handle == nullptr) {
    pthread_mutex_destroy(&block->mutex);
    delete block;
    delete mapping;
  }
  return handle;
}

void MappingRegistry::Detach(Mapping* mapping) {
  std::lock_guard<std::mutex> guard(lock_);
  if (--mapping->handles != 0) return;
  // A thread here may still own the mutex: its robust-list entry lives in this memory, so the
  // mapping must stay (a later open of the same object reuses it).
  if (mapping->owned.load() > 0) return;
  if (mapping->shared) {
    mappings_.erase(std::make_pair(mapping->device, mapping->inode));
    Sys().munmap(mapping->block, sizeof(SharedBlock));
  } else {
    pthread_mutex_destroy(&mapping->block->mutex);
    delete mapping->block;
  }
  delete mapping;
}

int LockWithin(pthread_mutex_t* mutex, DWORD timeoutMs) {
  if (timeoutMs == kWaitForever) return pthread_mutex_lock(mutex);
  if (timeoutMs == 0) return pthread_mutex_trylock(mutex);
  struct timespec deadline;
  clock_gettime(CLOCK_REALTIME, &deadline);
  deadline.tv_sec += static_cast<time_t>(timeoutMs / 1000);
  deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
  if (deadline.tv_nsec >= 1000000000L) {
    deadline.tv_sec += 1;
    deadline.tv_nsec -= 1000000000L;
  }
  return pthread_mutex_timedlock(mutex, &deadline);
}

NamedMutex* OpenOrCreate(const wchar_t* name, bool create, const ObjectSecurity* security, DWORD* error) {
  if (CallerIsAnonymous()) {
    *error = kErrorAccessDenied;
    return nullptr;
  }
  std::string objectName;
  if (!SharedMutexObjectName(name, &objectName, error)) return nullptr;
  for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
    Descriptor fd(Sys().shm_open(objectName.c_str(), O_RDWR, 0));
    const bool existed = fd.IsValid();
    if (!existed) {
      if (errno != ENOENT || !create) {
        *error = Win32ErrorFromErrno(errno);
        return nullptr;
      }
      fd = PublishObject(objectName, security);
      if (!fd && errno == EEXIST) continue;
      if (!fd) {
        *error = Win32ErrorFromErrno(errno);
        return nullptr;
      }
    }
    NamedMutex* handle = MappingRegistry::Get().Attach(fd.Get(), error);
    if (handle != nullptr) *error = existed ? kErrorAlreadyExists : 0;
    return handle;
  }
  *error = kErrorGenFailure;
  return nullptr;
}

}  // namespace

bool SharedMutexObjectName(const std::wstring& name, std::string* objectName, DWORD* error) {
  // The namespace links themselves are not mutexes.
  if (name == L"Global" || name == L"Local" || name == L"Session") {
    *error = kErrorInvalidHandle;
    return false;
  }
  std::wstring leaf = name;
  for (const wchar_t* prefix : {L"Global\\", L"Local\\"}) {
    if (StartsWith(leaf, prefix)) {
      leaf.erase(0, std::wcslen(prefix));
      break;
    }
  }
  if (leaf.empty() || leaf[0] == L'\\') {
    *error = kErrorInvalidName;
    return false;
  }
  if (leaf.find(L'\\') != std::wstring::npos) {
    *error = kErrorPathNotFound;
    return false;
  }
  const std::string utf8 = EncodeUtf8(leaf.data(), leaf.size());
  std::string readable;
  for (char c : utf8) {
    if (readable.size() == kReadableNameLength) break;
    readable.push_back(IsPortableNameChar(c) ? c : '_');
  }
  *objectName = kObjectPrefix + readable + "-" + Hex16(Fnv1a64(utf8));
  return true;
}

NamedMutex* CreateNamedMutex(const wchar_t* name, const ObjectSecurity* security, DWORD* error) {
  if (name == nullptr || *name == L'\0') return MappingRegistry::Get().AttachPrivate(error);
  return OpenOrCreate(name, true, security, error);
}

NamedMutex* OpenNamedMutex(const wchar_t* name, DWORD* error) {
  if (name == nullptr || *name == L'\0') {
    *error = name == nullptr ? kErrorInvalidParameter : kErrorInvalidHandle;
    return nullptr;
  }
  return OpenOrCreate(name, false, nullptr, error);
}

WaitResult WaitNamedMutex(NamedMutex* mutex, DWORD timeoutMs) {
  if (mutex == nullptr) return WaitResult::Failed;
  pthread_mutex_t* lock = &mutex->mapping->block->mutex;
  WaitResult result;
  switch (LockWithin(lock, timeoutMs)) {
    case 0:
      result = WaitResult::Acquired;
      break;
    case EOWNERDEAD:
      // The previous owner died holding it: ours now, as WAIT_ABANDONED hands it over.
      pthread_mutex_consistent(lock);
      result = WaitResult::Abandoned;
      break;
    case EBUSY:
    case ETIMEDOUT:
      return WaitResult::TimedOut;
    default:
      return WaitResult::Failed;
  }
  mutex->mapping->owned.fetch_add(1);
  return result;
}

bool ReleaseNamedMutex(NamedMutex* mutex, DWORD* error) {
  if (mutex == nullptr) {
    *error = kErrorInvalidHandle;
    return false;
  }
  const int result = pthread_mutex_unlock(&mutex->mapping->block->mutex);
  if (result != 0) {
    *error = result == EPERM ? kErrorNotOwner : Win32ErrorFromErrno(result);
    return false;
  }
  mutex->mapping->owned.fetch_sub(1);
  *error = 0;
  return true;
}

void CloseNamedMutex(NamedMutex* mutex) {
  if (mutex == nullptr) return;
  Mapping* mapping = mutex->mapping;
  delete mutex;
  MappingRegistry::Get().Detach(mapping);
}

}  // namespace DE::detail::linux_impl
