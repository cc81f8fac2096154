// The file operations under the streams and the file records: open a file by name with access,
// sharing and disposition; read; write; move the file pointer; set the end of file; close.
//
// Windows: CreateFileW, ReadFile, WriteFile, SetFilePointerEx, SetEndOfFile, CloseHandle.
// Linux: open(2) and friends through platform/linux/shared_file.h. The HANDLE holds the file
// descriptor plus one (so a null handle is never a descriptor); file names are the UTF-8 form of
// the wide path, taken as given (a backslash is an ordinary character there). Sharing is
// emulated with open-file-description locks that every opener through this library honours, in
// other processes and in this one; programs that do not use the library are not kept out (the
// locks are advisory). See shared_file.h for the scheme.
//
// Every failure sets the calling thread's last error (last_error.h) to a Win32 code, the same
// on both platforms for the cases the library meets: ERROR_FILE_NOT_FOUND (2),
// ERROR_PATH_NOT_FOUND (3), ERROR_ACCESS_DENIED (5, also for a folder or a wrong-direction
// transfer), ERROR_INVALID_HANDLE (6), ERROR_SHARING_VIOLATION (32), ERROR_INVALID_PARAMETER
// (87), ERROR_NEGATIVE_SEEK (131).
#pragma once

#include <string>

#include "UtilPlatform.h"

namespace DE::detail::file_io {

// Access wanted by an opener, and access it lets other openers have at the same time.
enum : unsigned { kAccessRead = 1, kAccessWrite = 2 };
enum : unsigned { kShareRead = 1, kShareWrite = 2 };

enum class Disposition {
  OpenExisting,  // fails when the file is missing
  CreateAlways,  // creates the file, or truncates an existing one once the sharing check passed
};

struct OpenRequest {
  unsigned access = 0;  // kAccess* bits, at least one
  unsigned share = 0;   // kShare* bits
  Disposition disposition = Disposition::OpenExisting;
  DWORD flagsAndAttributes = 0;  // given to CreateFileW as is; unused on Linux
};

// Opens `path`; INVALID_HANDLE_VALUE on failure.
HANDLE Open(const std::wstring& path, const OpenRequest& request);
// One transfer of up to `count` bytes at the file pointer; *done gets the bytes moved (0 at end of
// file). False on failure, *done then 0 or the bytes moved before the failure.
bool Read(HANDLE file, void* buffer, DWORD count, DWORD* done);
bool Write(HANDLE file, const void* buffer, DWORD count, DWORD* done);
// Moves the file pointer (origin 0 begin, 1 current, 2 end); *position gets the new offset.
// A position before the start fails with ERROR_NEGATIVE_SEEK; past the end is allowed.
bool Seek(HANDLE file, long long offset, DWORD origin, long long* position);
// Makes the file pointer the end of the file (needs write access).
bool SetEnd(HANDLE file);
bool Close(HANDLE file);

}  // namespace DE::detail::file_io
