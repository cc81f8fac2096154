// Windows file sharing and transfers over Linux descriptors. Only Linux-specific code goes in this file.
#include "platform/linux/shared_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>

#include "platform/linux/descriptor.h"
#include "platform/linux/system_calls.h"
#include "platform/linux/win32_error.h"

namespace DE::detail::linux_impl {
namespace {

// The four facts an open announces (see the header), each a region of 2^32 lock bytes.
enum Region { kReaders = 0, kWriters = 1, kNoRead = 2, kNoWrite = 3 };
constexpr off_t kRegionSize = off_t{1} << 32;
constexpr off_t kRegionBase = off_t{1} << 62;
// Linux moves at most this much in one read(2) or write(2).
constexpr std::size_t kMaxTransfer = 0x7FFFF000;

off_t RegionStart(Region region) { return kRegionBase + static_cast<off_t>(region) * kRegionSize; }

// A well-spread 32-bit offset inside a region (splitmix64 over a per-process sequence).
off_t NextSlot() {
  static std::atomic<std::uint64_t> sequence{
      static_cast<std::uint64_t>(getpid()) << 32 ^
      static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count())};
  std::uint64_t z = sequence.fetch_add(0x9E3779B97F4A7C15ull) + 0x9E3779B97F4A7C15ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return static_cast<off_t>((z ^ (z >> 31)) & 0xFFFFFFFFu);
}

enum class Outcome { Yes, No, Unsupported };

// Locks one byte of the region for this open file description.
Outcome Announce(int fd, bool canRead, Region region) {
  for (int attempt = 0; attempt < 64; ++attempt) {
    struct flock lock = {};
    lock.l_type = canRead ? F_RDLCK : F_WRLCK;  // the descriptor's mode decides which it may take
    lock.l_whence = SEEK_SET;
    lock.l_start = RegionStart(region) + NextSlot();
    lock.l_len = 1;
    if (Sys().fcntl(fd, F_OFD_SETLK, &lock) == 0) return Outcome::Yes;
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) return Outcome::Unsupported;
  }
  return Outcome::No;  // 64 clashes in 2^32 bytes: the region is flooded; refuse rather than guess
}

// Whether another open file description holds any lock in the region.
Outcome OthersIn(int fd, Region region) {
  struct flock probe = {};
  probe.l_type = F_WRLCK;  // conflicts with every lock, read or write
  probe.l_whence = SEEK_SET;
  probe.l_start = RegionStart(region);
  probe.l_len = kRegionSize;
  if (Sys().fcntl(fd, F_OFD_GETLK, &probe) != 0) return Outcome::Unsupported;
  return probe.l_type == F_UNLCK ? Outcome::No : Outcome::Yes;
}

// 0 when the open may go on, else ERROR_SHARING_VIOLATION.
DWORD CheckSharing(int fd, const SharedFileOpen& how) {
  const bool announce[] = {how.read, how.write, !how.shareRead, !how.shareWrite};
  const Region mine[] = {kReaders, kWriters, kNoRead, kNoWrite};
  const Region avoid[] = {kNoRead, kNoWrite, kReaders, kWriters};
  for (int i = 0; i < 4; ++i) {
    if (!announce[i]) continue;
    const Outcome held = Announce(fd, how.read, mine[i]);
    if (held == Outcome::Unsupported) return kErrorSuccess;  // no locks here: open unchecked
    if (held == Outcome::No) return kErrorSharingViolation;
  }
  for (int i = 0; i < 4; ++i) {
    if (!announce[i]) continue;
    const Outcome clash = OthersIn(fd, avoid[i]);
    if (clash == Outcome::Unsupported) return kErrorSuccess;
    if (clash == Outcome::Yes) return kErrorSharingViolation;
  }
  return kErrorSuccess;
}

bool IsFolder(const std::string& path) {
  struct stat info;
  return Sys().stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Windows tells a missing file (2) from a missing folder on the way (3).
DWORD MissingError(const std::string& path, bool creating) {
  if (creating) return kErrorPathNotFound;
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return kErrorFileNotFound;
  return IsFolder(slash == 0 ? std::string("/") : path.substr(0, slash)) ? kErrorFileNotFound
                                                                         : kErrorPathNotFound;
}

// EBADF on a good descriptor means a transfer the descriptor's mode does not allow.
DWORD TransferError(int fd, int error) {
  if (error == EBADF && Sys().fcntl(fd, F_GETFL, nullptr) != -1) return kErrorAccessDenied;
  return Win32ErrorFromErrno(error);
}

// Moves up to `count` bytes in calls of at most kMaxTransfer bytes, call(offset, chunk) moving the
// bytes from `offset` on; interrupted calls are retried. A short read ends the transfer (end of
// file, or what a pipe had); a short write goes on with the rest.
template <typename Call>
bool Transfer(int fd, DWORD count, bool reading, DWORD* done, DWORD* error, Call call) {
  DWORD total = 0;
  while (total < count) {
    const std::size_t chunk = std::min<std::size_t>(count - total, kMaxTransfer);
    const ssize_t n = call(total, chunk);
    if (n < 0) {
      if (errno == EINTR) continue;
      *done = total;
      *error = TransferError(fd, errno);
      return false;
    }
    total += static_cast<DWORD>(n);
    if (reading && static_cast<std::size_t>(n) < chunk) break;
  }
  *done = total;
  return true;
}

}  // namespace

int OpenSharedFile(const std::string& path, const SharedFileOpen& how, DWORD* error) {
  if (path.empty()) {
    *error = kErrorPathNotFound;
    return -1;
  }
  int flags = O_CLOEXEC | O_NOCTTY;
  flags |= how.read && how.write ? O_RDWR : how.write ? O_WRONLY : O_RDONLY;
  if (how.createAlways) flags |= O_CREAT;
  Descriptor fd;
  do {
    fd.Reset(Sys().open(path.c_str(), flags, 0666));
  } while (!fd && errno == EINTR);
  if (!fd) {
    *error = errno == ENOENT ? MissingError(path, how.createAlways) : Win32ErrorFromErrno(errno);
    return -1;
  }
  // A failure below closes the descriptor, which drops every lock it announced.
  struct stat info;
  if (Sys().fstat(fd.Get(), &info) != 0) {
    *error = LastWin32ErrorFromErrno();
    return -1;
  }
  if (S_ISDIR(info.st_mode)) {  // Windows opens a folder only with backup semantics
    *error = kErrorAccessDenied;
    return -1;
  }
  const DWORD refused = CheckSharing(fd.Get(), how);
  if (refused != kErrorSuccess) {
    *error = refused;
    return -1;
  }
  if (how.createAlways && S_ISREG(info.st_mode) && Sys().ftruncate(fd.Get(), 0) != 0) {
    *error = LastWin32ErrorFromErrno();
    return -1;
  }
  return fd.Release();
}

bool ReadSharedFile(int fd, void* buffer, DWORD count, DWORD* done, DWORD* error) {
  char* out = static_cast<char*>(buffer);
  return Transfer(fd, count, true, done, error,
                  [&](DWORD offset, std::size_t chunk) { return Sys().read(fd, out + offset, chunk); });
}

bool WriteSharedFile(int fd, const void* buffer, DWORD count, DWORD* done, DWORD* error) {
  const char* in = static_cast<const char*>(buffer);
  return Transfer(fd, count, false, done, error,
                  [&](DWORD offset, std::size_t chunk) { return Sys().write(fd, in + offset, chunk); });
}

bool SeekSharedFile(int fd, long long offset, DWORD origin, long long* position, DWORD* error) {
  static const int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (origin > 2) {
    *error = kErrorInvalidParameter;
    return false;
  }
  const off_t moved = Sys().lseek(fd, static_cast<off_t>(offset), kWhence[origin]);
  if (moved < 0) {
    *error = errno == EINVAL ? kErrorNegativeSeek : LastWin32ErrorFromErrno();
    return false;
  }
  *position = moved;
  return true;
}

bool SetEndOfSharedFile(int fd, DWORD* error) {
  const int mode = Sys().fcntl(fd, F_GETFL, nullptr);
  if (mode == -1) {
    *error = LastWin32ErrorFromErrno();
    return false;
  }
  if ((mode & O_ACCMODE) == O_RDONLY) {
    *error = kErrorAccessDenied;
    return false;
  }
  const off_t end = Sys().lseek(fd, 0, SEEK_CUR);
  if (end < 0 || Sys().ftruncate(fd, end) != 0) {
    *error = TransferError(fd, errno);
    return false;
  }
  return true;
}

bool CloseSharedFile(int fd, DWORD* error) {
  // Linux releases the descriptor even when close reports EINTR, so only EBADF is a failure.
  if (Sys().close(fd) != 0 && errno == EBADF) {
    *error = kErrorInvalidHandle;
    return false;
  }
  return true;
}

}  // namespace DE::detail::linux_impl
