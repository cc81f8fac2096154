// The registry operations DE::Registry calls, with the meaning of their advapi32 namesakes.
// Windows: the advapi32 calls themselves. Linux: the hive store of platform/linux.
//
// Every operation returns a Win32 code (0 on success) and leaves its outputs untouched on
// failure unless stated. Names are wide strings (UTF-16 on Windows, code points on Linux);
// lengths in characters count UTF-16 units; data sizes are bytes of the Windows form (strings
// as UTF-16LE), the same on both platforms.
#pragma once

#include <string>

#include "UtilPlatform.h"

namespace DE::detail {

constexpr LONG kRegSuccess = 0;
constexpr LONG kRegAccessDenied = 5;   // ERROR_ACCESS_DENIED
constexpr LONG kRegMoreData = 234;     // ERROR_MORE_DATA
constexpr LONG kRegNoMoreItems = 259;  // ERROR_NO_MORE_ITEMS
constexpr LONG kRegBadNetPath = 53;    // ERROR_BAD_NETPATH
constexpr LONG kRegInvalidHandle = 6;  // ERROR_INVALID_HANDLE
constexpr DWORD kRegViewMask = 0x300;  // KEY_WOW64_64KEY | KEY_WOW64_32KEY

// RegOpenKeyExW(base, subKey, 0, access, result).
LONG RegApiOpenKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result);
// RegCreateKeyExW(base, subKey, 0, no class, REG_OPTION_NON_VOLATILE, access, no security,
// result, disposition). disposition may be null.
LONG RegApiCreateKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result, DWORD* disposition);
// RegQueryValueExW: type, data and size may be null; *size is the buffer size in and the data
// size out (also on ERROR_MORE_DATA).
LONG RegApiQueryValue(HKEY key, const wchar_t* name, DWORD* type, BYTE* data, DWORD* size);
// RegSetValueExW.
LONG RegApiSetValue(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD size);
// RegSetValueExA: name and string data in the ANSI code page (string types are stored wide;
// string data whose count ends just before a NUL gets that NUL, so data[size] must be readable).
LONG RegApiSetValueA(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size);
LONG RegApiDeleteValue(HKEY key, const wchar_t* name);
// RegDeleteKeyW: fails on a key with sub-keys.
LONG RegApiDeleteKey(HKEY base, const wchar_t* subKey);
// RegDeleteKeyExW(base, subKey, view, 0).
LONG RegApiDeleteKeyEx(HKEY base, const wchar_t* subKey, DWORD view);
// RegEnumKeyExW: *nameChars is the buffer size in characters in, the name length out (no NUL).
LONG RegApiEnumKey(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars);
// RegEnumValueW with the name only (no type or data).
LONG RegApiEnumValue(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars);

struct RegApiKeyInfo {
  DWORD subKeys = 0;
  DWORD maxSubKeyLen = 0;  // characters
  DWORD values = 0;
  DWORD maxValueNameLen = 0;  // characters
  DWORD maxValueLen = 0;      // bytes
  FILETIME lastWrite = {0, 0};
};
// RegQueryInfoKeyW.
LONG RegApiQueryInfoKey(HKEY key, RegApiKeyInfo* info);
LONG RegApiFlushKey(HKEY key);
LONG RegApiCloseKey(HKEY key);
// RegConnectRegistryW(machine, root, result).
LONG RegApiConnect(const wchar_t* machine, HKEY root, HKEY* result);
LONG RegApiLoadKey(HKEY root, const wchar_t* subKey, const wchar_t* fileName);
LONG RegApiUnLoadKey(HKEY root, const wchar_t* subKey);
LONG RegApiSaveKey(HKEY key, const wchar_t* fileName);
LONG RegApiRestoreKey(HKEY key, const wchar_t* fileName, DWORD flags);
LONG RegApiReplaceKey(HKEY base, const wchar_t* subKey, const wchar_t* newFileName,
                      const wchar_t* oldFileName);

// GetVersionExW and GetSystemMetrics(SM_DBCSENABLED): false when the version query fails;
// otherwise doubled says whether key-info name lengths are doubled (a DBCS-enabled NT system).
bool RegApiNameLengthsDoubled(bool& doubled);

}  // namespace DE::detail
