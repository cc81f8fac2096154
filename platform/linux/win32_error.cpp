// The errno to Win32 code table of the Linux substitutes. Only Linux-specific code goes in this file.
#include "platform/linux/win32_error.h"

#include <cerrno>
#include <cstddef>

namespace DE::detail::linux_impl {
namespace {

// How an entry takes part in the two look-ups.
enum Direction : unsigned char {
  kBoth,         // errno -> code and code -> errno
  kToWin32Only,  // another errno describes the code better
  kToErrnoOnly,  // the code's best description, though the errno maps elsewhere
};

struct Entry {
  int errnoValue;
  DWORD win32;
  Direction direction;
};

// Forward look-up takes the first entry for an errno, reverse look-up the first for a code, so
// where several errno values share a code the one listed first names it.
constexpr Entry kTable[] = {
    {EPERM, kErrorAccessDenied, kToWin32Only},
    {ENOENT, kErrorFileNotFound, kBoth},
    {ENOENT, kErrorPathNotFound, kToErrnoOnly},
    {ESRCH, kErrorInvalidParameter, kToWin32Only},
    {EINTR, kErrorOperationAborted, kBoth},
    {EIO, kErrorIoDevice, kBoth},
    {ENXIO, kErrorDeviceNotConnected, kBoth},
    {E2BIG, kErrorInvalidParameter, kToWin32Only},
    {ENOEXEC, kErrorBadExeFormat, kBoth},
    {EBADF, kErrorInvalidHandle, kBoth},
    {ECHILD, kErrorWaitNoChildren, kBoth},
    {EAGAIN, kErrorBusy, kToWin32Only},
    {ENOMEM, kErrorNotEnoughMemory, kBoth},
    {EACCES, kErrorAccessDenied, kBoth},
    {EFAULT, kErrorNoAccess, kBoth},
    {EBUSY, kErrorBusy, kBoth},
    {EBUSY, kErrorSharingViolation, kToErrnoOnly},
    {EBUSY, kErrorLockViolation, kToErrnoOnly},
    {EEXIST, kErrorAlreadyExists, kBoth},
    {EEXIST, kErrorFileExists, kToErrnoOnly},
    {EXDEV, kErrorNotSameDevice, kBoth},
    {ENODEV, kErrorInvalidDrive, kBoth},
    {ENOTDIR, kErrorPathNotFound, kToWin32Only},
    {ENOTDIR, kErrorDirectory, kToErrnoOnly},
    {EISDIR, kErrorAccessDenied, kToWin32Only},
    {EINVAL, kErrorInvalidParameter, kBoth},
    {EINVAL, kErrorNegativeSeek, kToErrnoOnly},
    {EINVAL, kErrorInvalidName, kToErrnoOnly},
    {ENFILE, kErrorTooManyOpenFiles, kToWin32Only},
    {EMFILE, kErrorTooManyOpenFiles, kBoth},
    {ENOTTY, kErrorInvalidFunction, kToWin32Only},
    {ETXTBSY, kErrorSharingViolation, kToWin32Only},
    {EFBIG, kErrorFileTooLarge, kBoth},
    {ENOSPC, kErrorDiskFull, kBoth},
    {ESPIPE, kErrorInvalidFunction, kToWin32Only},
    {EROFS, kErrorWriteProtect, kBoth},
    {EMLINK, kErrorTooManyLinks, kBoth},
    {EPIPE, kErrorNoData, kBoth},
    {EPIPE, kErrorBrokenPipe, kToErrnoOnly},
    {ERANGE, kErrorInsufficientBuffer, kBoth},
    {EDEADLK, kErrorPossibleDeadlock, kBoth},
    {ENAMETOOLONG, kErrorFilenameExcedRange, kBoth},
    {ENOLCK, kErrorSharingBufferExceeded, kBoth},
    {ENOSYS, kErrorCallNotImplemented, kBoth},
    {ENOTEMPTY, kErrorDirNotEmpty, kBoth},
    {ELOOP, kErrorCantResolveFilename, kBoth},
    {ETIMEDOUT, kErrorTimeout, kBoth},
    {ETIME, kErrorTimeout, kToWin32Only},
    {ENOTSUP, kErrorNotSupported, kBoth},
    {EOPNOTSUPP, kErrorNotSupported, kToWin32Only},
    {ECONNREFUSED, kErrorConnectionRefused, kBoth},
    {ECONNRESET, kErrorNetnameDeleted, kBoth},
    {ECONNABORTED, kErrorConnectionAborted, kBoth},
    {ENETUNREACH, kErrorNetworkUnreachable, kBoth},
    {EHOSTUNREACH, kErrorHostUnreachable, kBoth},
    {EADDRINUSE, kErrorAddressAlreadyAssociated, kBoth},
    {EADDRNOTAVAIL, kErrorAddressNotAssociated, kBoth},
    {ECANCELED, kErrorCancelled, kBoth},
    {EOVERFLOW, kErrorArithmeticOverflow, kBoth},
    {EILSEQ, kErrorNoUnicodeTranslation, kBoth},
    {ENOBUFS, kErrorNoSystemResources, kBoth},
    {EDQUOT, kErrorDiskQuotaExceeded, kBoth},
    {ENODATA, kErrorHandleEof, kToErrnoOnly},
    {ENOENT, kErrorNotFound, kToErrnoOnly},
    {EPERM, kErrorPrivilegeNotHeld, kToErrnoOnly},
    {EPERM, kErrorNotOwner, kToErrnoOnly},
    {EIO, kErrorGenFailure, kToErrnoOnly},
    {EINVAL, kErrorInvalidData, kToErrnoOnly},
};

}  // namespace

DWORD Win32ErrorFromErrno(int error) {
  if (error == 0) return kErrorSuccess;
  for (const Entry& entry : kTable) {
    if (entry.errnoValue == error && entry.direction != kToErrnoOnly) return entry.win32;
  }
  return kErrorGenFailure;
}

DWORD LastWin32ErrorFromErrno() { return Win32ErrorFromErrno(errno); }

int ErrnoFromWin32Error(DWORD code) {
  for (const Entry& entry : kTable) {
    if (entry.win32 == code && entry.direction != kToWin32Only) return entry.errnoValue;
  }
  return 0;
}

}  // namespace DE::detail::linux_impl
