// The Linux substitute for CreateFileW and the plain file transfers, with Windows' sharing modes
// emulated and Win32 error codes.
//
// Sharing. Windows refuses an open when it wants an access that an open handle does not share,
// or when it denies an access that an open handle has. Here every open file description made by
// this library announces itself with open-file-description locks (F_OFD_SETLK), which are
// advisory, per description (so two opens in one process see each other as two processes do)
// and dropped by the kernel when the description closes or its process dies. Four regions of
// 2^32 bytes far past any real data (from byte 2^62 on) stand for four facts:
//   READERS  an open with read access       WRITERS  an open with write access
//   NO-READ  an open that denies reading    NO-WRITE an open that denies writing
// An opener first locks one byte, at a random offset, in each region that describes it (a read
// lock when its descriptor can read, else a write lock; a clash on the byte just picks another),
// and then asks F_OFD_GETLK whether any other description holds a lock in the regions it must
// not meet: NO-READ when it reads, NO-WRITE when it writes, READERS when it denies reading,
// WRITERS when it denies writing. Any hit refuses the open with ERROR_SHARING_VIOLATION (32).
// Because each opener announces before it looks, two conflicting openers racing each other
// cannot both succeed (at worst both are refused). A file system without such locks opens
// without the check.
//
// Other Windows meanings kept: a folder cannot be opened as a file (ERROR_ACCESS_DENIED); a
// missing file gives ERROR_FILE_NOT_FOUND and a missing folder on the way ERROR_PATH_NOT_FOUND;
// "create always" truncates only after the sharing check, so a refused create leaves the file as
// it was; descriptors are close-on-exec, as Windows handles are not inherited by default.
#pragma once

#include <string>

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

struct SharedFileOpen {
  bool read = false;
  bool write = false;
  bool shareRead = false;   // others may read while this is open
  bool shareWrite = false;  // others may write while this is open
  bool createAlways = false;
};

// Returns the descriptor, or -1 with *error set to a Win32 code.
int OpenSharedFile(const std::string& path, const SharedFileOpen& how, DWORD* error);

// Transfers at the file offset; *done gets the bytes moved. False with *error on failure.
bool ReadSharedFile(int fd, void* buffer, DWORD count, DWORD* done, DWORD* error);
bool WriteSharedFile(int fd, const void* buffer, DWORD count, DWORD* done, DWORD* error);
// origin 0/1/2 as SEEK_SET/SEEK_CUR/SEEK_END; another origin is ERROR_INVALID_PARAMETER.
bool SeekSharedFile(int fd, long long offset, DWORD origin, long long* position, DWORD* error);
// Truncates or extends the file to the current offset.
bool SetEndOfSharedFile(int fd, DWORD* error);
bool CloseSharedFile(int fd, DWORD* error);

}  // namespace DE::detail::linux_impl
