// Windows binding of the registry operations: the advapi32 calls. Only Windows code goes here.
#include "UtilPlatform.h"

#include "foundation/registry_api.h"

namespace DE::detail {

LONG RegApiOpenKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result) {
  return RegOpenKeyExW(base, subKey, 0, access, result);
}

LONG RegApiCreateKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result, DWORD* disposition) {
  return RegCreateKeyExW(base, subKey, 0, nullptr, REG_OPTION_NON_VOLATILE, access, nullptr, result,
                         disposition);
}

LONG RegApiQueryValue(HKEY key, const wchar_t* name, DWORD* type, BYTE* data, DWORD* size) {
  return RegQueryValueExW(key, name, nullptr, type, data, size);
}

LONG RegApiSetValue(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) {
  return RegSetValueExW(key, name, 0, type, data, size);
}

LONG RegApiSetValueA(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size) {
  return RegSetValueExA(key, name, 0, type, data, size);
}

LONG RegApiDeleteValue(HKEY key, const wchar_t* name) { return RegDeleteValueW(key, name); }

LONG RegApiDeleteKey(HKEY base, const wchar_t* subKey) { return RegDeleteKeyW(base, subKey); }

LONG RegApiDeleteKeyEx(HKEY base, const wchar_t* subKey, DWORD view) {
  return RegDeleteKeyExW(base, subKey, view, 0);
}

LONG RegApiEnumKey(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars) {
  return RegEnumKeyExW(key, index, name, nameChars, nullptr, nullptr, nullptr, nullptr);
}

LONG RegApiEnumValue(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars) {
  return RegEnumValueW(key, index, name, nameChars, nullptr, nullptr, nullptr, nullptr);
}

LONG RegApiQueryInfoKey(HKEY key, RegApiKeyInfo* info) {
  RegApiKeyInfo got;
  const LONG code =
      RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &got.subKeys, &got.maxSubKeyLen, nullptr, &got.values,
                       &got.maxValueNameLen, &got.maxValueLen, nullptr, &got.lastWrite);
  if (code == ERROR_SUCCESS) *info = got;
  return code;
}

LONG RegApiFlushKey(HKEY key) { return RegFlushKey(key); }

LONG RegApiCloseKey(HKEY key) { return RegCloseKey(key); }

LONG RegApiConnect(const wchar_t* machine, HKEY root, HKEY* result) {
  return RegConnectRegistryW(machine, root, result);
}

LONG RegApiLoadKey(HKEY root, const wchar_t* subKey, const wchar_t* fileName) {
  return RegLoadKeyW(root, subKey, fileName);
}

LONG RegApiUnLoadKey(HKEY root, const wchar_t* subKey) { return RegUnLoadKeyW(root, subKey); }

LONG RegApiSaveKey(HKEY key, const wchar_t* fileName) { return RegSaveKeyW(key, fileName, nullptr); }

LONG RegApiRestoreKey(HKEY key, const wchar_t* fileName, DWORD flags) {
  return RegRestoreKeyW(key, fileName, flags);
}

LONG RegApiReplaceKey(HKEY base, const wchar_t* subKey, const wchar_t* newFileName,
                      const wchar_t* oldFileName) {
  return RegReplaceKeyW(base, subKey, newFileName, oldFileName);
}

bool RegApiNameLengthsDoubled(bool& doubled) {
  OSVERSIONINFOW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
  if (!GetVersionExW(&info)) return false;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
  doubled = GetSystemMetrics(SM_DBCSENABLED) != 0 && info.dwPlatformId == VER_PLATFORM_WIN32_NT;
  return true;
}

}  // namespace DE::detail
