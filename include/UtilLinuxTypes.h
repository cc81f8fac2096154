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

// Registry: the predefined root keys (sign-extended 32-bit values, as <windows.h> defines them
// on x64), the value types and the key access rights.
#define UTIL_PREDEFINED_HKEY(value) \
  (reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(value))))
#define HKEY_CLASSES_ROOT UTIL_PREDEFINED_HKEY(0x80000000u)
#define HKEY_CURRENT_USER UTIL_PREDEFINED_HKEY(0x80000001u)
#define HKEY_LOCAL_MACHINE UTIL_PREDEFINED_HKEY(0x80000002u)
#define HKEY_USERS UTIL_PREDEFINED_HKEY(0x80000003u)
#define HKEY_PERFORMANCE_DATA UTIL_PREDEFINED_HKEY(0x80000004u)
#define HKEY_PERFORMANCE_TEXT UTIL_PREDEFINED_HKEY(0x80000050u)
#define HKEY_PERFORMANCE_NLSTEXT UTIL_PREDEFINED_HKEY(0x80000060u)
#define HKEY_CURRENT_CONFIG UTIL_PREDEFINED_HKEY(0x80000005u)
#define HKEY_DYN_DATA UTIL_PREDEFINED_HKEY(0x80000006u)
#define HKEY_CURRENT_USER_LOCAL_SETTINGS UTIL_PREDEFINED_HKEY(0x80000007u)

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

#define DELETE 0x00010000L
#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_EXECUTE 0x20019
#define KEY_ALL_ACCESS 0xF003F
