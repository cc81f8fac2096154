// Linux stand-ins for the Windows types that the exported interface names. Layouts match the
// Windows definitions field for field, so records hold the same values on both platforms.
// Only types and constants live here: no Win32 function is declared under its Windows name.
#pragma once

#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using UINT = unsigned int;
using HANDLE = void*;
using HMODULE = void*;
using LPVOID = void*;

struct HKEY__;
using HKEY = HKEY__*;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// The all-ones handle value Windows uses for "no handle" from file APIs.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

// Where the library keeps its Linux in-process lock (a pthread mutex) for CommonLock: opaque
// storage of the Windows x64 critical section's size and alignment. Only the library reads it.
struct CRITICAL_SECTION {
  alignas(8) unsigned char Opaque[40];
};

// Same fields as on Windows. lpSecurityDescriptor holds a descriptor from DE::CreateDACL (or
// null for the default: owner only); the library's named objects understand no other.
struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
using PSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
