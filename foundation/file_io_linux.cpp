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

// Runs call(fd, &error) on the handle's descriptor; a failure leaves `error` as the last error.
template <typename Call>
bool OnDescriptor(HANDLE file, Call call) {
  const int fd = ToDescriptor(file);
  if (fd < 0) return false;
  DWORD error = 0;
  if (call(fd, &error)) return true;
  SetLastErrorCode(error);
  return false;
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
  return OnDescriptor(
      file, [&](int fd, DWORD* error) { return linux_impl::ReadSharedFile(fd, buffer, count, done, error); });
}

bool Write(HANDLE file, const void* buffer, DWORD count, DWORD* done) {
  *done = 0;
  return OnDescriptor(file, [&](int fd, DWORD* error) {
    return linux_impl::WriteSharedFile(fd, buffer, count, done, error);
  });
}

bool Seek(HANDLE file, long long offset, DWORD origin, long long* position) {
  return OnDescriptor(file, [&](int fd, DWORD* error) {
    return linux_impl::SeekSharedFile(fd, offset, origin, position, error);
  });
}

bool SetEnd(HANDLE file) { return OnDescriptor(file, linux_impl::SetEndOfSharedFile); }

bool Close(HANDLE file) { return OnDescriptor(file, linux_impl::CloseSharedFile); }

}  // namespace DE::detail::file_io
