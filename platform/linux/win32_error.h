// The Win32 error codes the Linux substitutes speak, and the one table that turns errno values
// into them (and back, for message texts).
//
// Every substitute reports failures with these codes so that callers see the same numbers as on
// Windows. Where Windows has two codes for one errno (EEXIST: ERROR_FILE_EXISTS 80 for a file
// created with CREATE_NEW, ERROR_ALREADY_EXISTS 183 otherwise) the table gives the general one
// and the substitute that knows better picks the other.
#pragma once

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

constexpr DWORD kErrorSuccess = 0;
constexpr DWORD kErrorInvalidFunction = 1;
constexpr DWORD kErrorFileNotFound = 2;
constexpr DWORD kErrorPathNotFound = 3;
constexpr DWORD kErrorTooManyOpenFiles = 4;
constexpr DWORD kErrorAccessDenied = 5;
constexpr DWORD kErrorInvalidHandle = 6;
constexpr DWORD kErrorNotEnoughMemory = 8;
constexpr DWORD kErrorInvalidData = 13;
constexpr DWORD kErrorInvalidDrive = 15;
constexpr DWORD kErrorNotSameDevice = 17;
constexpr DWORD kErrorWriteProtect = 19;
constexpr DWORD kErrorGenFailure = 31;
constexpr DWORD kErrorSharingViolation = 32;
constexpr DWORD kErrorLockViolation = 33;
constexpr DWORD kErrorSharingBufferExceeded = 36;
constexpr DWORD kErrorHandleEof = 38;
constexpr DWORD kErrorNotSupported = 50;
constexpr DWORD kErrorNetnameDeleted = 64;
constexpr DWORD kErrorFileExists = 80;
constexpr DWORD kErrorInvalidParameter = 87;
constexpr DWORD kErrorBrokenPipe = 109;
constexpr DWORD kErrorDiskFull = 112;
constexpr DWORD kErrorCallNotImplemented = 120;
constexpr DWORD kErrorInsufficientBuffer = 122;
constexpr DWORD kErrorInvalidName = 123;
constexpr DWORD kErrorWaitNoChildren = 128;
constexpr DWORD kErrorNegativeSeek = 131;
constexpr DWORD kErrorDirNotEmpty = 145;
constexpr DWORD kErrorBusy = 170;
constexpr DWORD kErrorAlreadyExists = 183;
constexpr DWORD kErrorBadExeFormat = 193;
constexpr DWORD kErrorFilenameExcedRange = 206;
constexpr DWORD kErrorFileTooLarge = 223;
constexpr DWORD kErrorNoData = 232;
constexpr DWORD kErrorDirectory = 267;
constexpr DWORD kErrorNotOwner = 288;
constexpr DWORD kErrorArithmeticOverflow = 534;
constexpr DWORD kErrorOperationAborted = 995;
constexpr DWORD kErrorNoAccess = 998;
constexpr DWORD kErrorNoUnicodeTranslation = 1113;
constexpr DWORD kErrorIoDevice = 1117;
constexpr DWORD kErrorPossibleDeadlock = 1131;
constexpr DWORD kErrorTooManyLinks = 1142;
constexpr DWORD kErrorDeviceNotConnected = 1167;
constexpr DWORD kErrorNotFound = 1168;
constexpr DWORD kErrorCancelled = 1223;
constexpr DWORD kErrorConnectionRefused = 1225;
constexpr DWORD kErrorAddressAlreadyAssociated = 1227;
constexpr DWORD kErrorAddressNotAssociated = 1228;
constexpr DWORD kErrorNetworkUnreachable = 1231;
constexpr DWORD kErrorHostUnreachable = 1232;
constexpr DWORD kErrorConnectionAborted = 1236;
constexpr DWORD kErrorDiskQuotaExceeded = 1295;
constexpr DWORD kErrorPrivilegeNotHeld = 1314;
constexpr DWORD kErrorNoSystemResources = 1450;
constexpr DWORD kErrorTimeout = 1460;
constexpr DWORD kErrorCantResolveFilename = 1921;

// The Win32 code for an errno value; 0 for 0; ERROR_GEN_FAILURE (31) for a value the table lacks.
DWORD Win32ErrorFromErrno(int error);
// The Win32 code for the current errno.
DWORD LastWin32ErrorFromErrno();
// The errno value that best describes a Win32 code (for its message text); 0 when none does.
int ErrnoFromWin32Error(DWORD code);

}  // namespace DE::detail::linux_impl
