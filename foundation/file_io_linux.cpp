// Linux binding of the file operations: only Linux-specific code goes in this file.
#include <climits>
#include <cstdint>

#include "foundation/file_io.h"
#include "foundation/last_error.h"
#include "foundation/text_codec.h"
#include "platform/linux/shared_file.h"
#include "platform/linux/win32_error.h"

namespace DE::detail::file_io {
namespace {

// The handle is the descriptor plus one, so that neither a null handle nor
// INVALID_HANDLE_VALUE is ever a descriptor.
HANDLE FromDescriptor(int fd) { return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(fd) + 1); }

// The descriptor of a handle, or -1 (with ERROR_INVALID_HANDLE as the last error).
int ToDescriptor(HANDLE file) {
  const std::intptr_t value = reinterpret_cast<std::intptr_t>(file) - 1;
  if (value < 0 || value > INT_MAX) {
    SetLastErrorCode(linux_impl::kErrorInvalidHandle);
    return -1;
  }
  return static_cast<int>(value);
}

// Returns ok, setting the last error from `error` when it is false. Callers make the call first:
// as two arguments of one call, the code could be read before the call that sets it.
bool Report(bool ok, DWORD error) {
  if (!ok) SetLastErrorCode(error);
  return ok;
}

}  // namespace

HANDLE Open(const std::wstring& path, const OpenRequest& request) {
  linux_impl::SharedFileOpen how;
  how.read = (request.access & kAccessRead) != 0;
  how.write = (request.access & kAccessWrite) != 0;
  how.shareRead = (request.share & kShareRead) != 0;
  how.shareWrite = (request.share & kShareWrite) != 0;
  how.createAlways = request.disposition == Disposition::CreateAlways;
  DWORD error = 0;
  const int fd = linux_impl::OpenSharedFile(WideToUtf8(path.data(), path.size()), how, &error);
  if (fd < 0) {
    SetLastErrorCode(error);
    return INVALID_HANDLE_VALUE;
  }
  return FromDescriptor(fd);
}

bool Read(HANDLE file, void* buffer, DWORD count, DWORD* done) {
  *done = 0;
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  const bool ok = linux_impl::ReadSharedFile(fd, buffer, count, done, &error);
  return Report(ok, error);
}

bool Write(HANDLE file, const void* buffer, DWORD count, DWORD* done) {
  *done = 0;
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  const bool ok = linux_impl::WriteSharedFile(fd, buffer, count, done, &error);
  return Report(ok, error);
}

bool Seek(HANDLE file, long long offset, DWORD origin, long long* position) {
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  const bool ok = linux_impl::SeekSharedFile(fd, offset, origin, position, &error);
  return Report(ok, error);
}

bool SetEnd(HANDLE file) {
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  const bool ok = linux_impl::SetEndOfSharedFile(fd, &error);
  return Report(ok, error);
}

bool Close(HANDLE file) {
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  const bool ok = linux_impl::CloseSharedFile(fd, &error);
  return Report(ok, error);
}

}  // namespace DE::detail::file_io
