// Windows binding of the file operations: only calls into the Win32 file API go in this file.
#include "foundation/file_io.h"

namespace DE::detail::file_io {

HANDLE Open(const std::wstring& path, const OpenRequest& request) {
  DWORD access = 0;
  if (request.access & kAccessRead) access |= GENERIC_READ;
  if (request.access & kAccessWrite) access |= GENERIC_WRITE;
  DWORD share = 0;
  if (request.share & kShareRead) share |= FILE_SHARE_READ;
  if (request.share & kShareWrite) share |= FILE_SHARE_WRITE;
  const DWORD disposition = request.disposition == Disposition::CreateAlways ? CREATE_ALWAYS : OPEN_EXISTING;
  return CreateFileW(path.c_str(), access, share, nullptr, disposition, request.flagsAndAttributes, nullptr);
}

bool Read(HANDLE file, void* buffer, DWORD count, DWORD* done) {
  *done = 0;
  return ReadFile(file, buffer, count, done, nullptr) != FALSE;
}

bool Write(HANDLE file, const void* buffer, DWORD count, DWORD* done) {
  *done = 0;
  return WriteFile(file, buffer, count, done, nullptr) != FALSE;
}

bool Seek(HANDLE file, long long offset, DWORD origin, long long* position) {
  LARGE_INTEGER distance;
  distance.QuadPart = offset;
  LARGE_INTEGER moved;
  moved.QuadPart = 0;
  if (!SetFilePointerEx(file, distance, &moved, origin)) return false;
  *position = moved.QuadPart;
  return true;
}

bool SetEnd(HANDLE file) { return SetEndOfFile(file) != FALSE; }

bool Close(HANDLE file) { return CloseHandle(file) != FALSE; }

}  // namespace DE::detail::file_io
