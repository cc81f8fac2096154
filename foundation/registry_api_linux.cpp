// Linux binding of the registry operations: the hive store of platform/linux. Only the
// conversions between the binding's wide strings and the store's UTF-16 go here.
#include <cstring>

#include "foundation/registry_api.h"
#include "foundation/text_codec.h"
#include "foundation/utf16.h"
#include "platform/linux/ansi_codepage.h"
#include "platform/linux/registry_store.h"

namespace DE::detail {

namespace store = linux_impl;

namespace {

std::u16string Units(const wchar_t* text) {
  if (text == nullptr) return std::u16string();
  const std::vector<std::uint16_t> units = ToUtf16(text, std::wcslen(text));
  return std::u16string(units.begin(), units.end());
}

std::string FilePath(const wchar_t* text) {
  return text == nullptr ? std::string() : FromWide(CodePage::Utf8, text, std::wcslen(text));
}

// Copies a name into a caller's buffer of *chars characters, NUL included.
LONG CopyName(const std::u16string& name, wchar_t* buffer, DWORD* chars) {
  if (buffer == nullptr || chars == nullptr) return 87;  // ERROR_INVALID_PARAMETER
  const std::wstring wide = FromUtf16(reinterpret_cast<const std::uint16_t*>(name.data()), name.size());
  if (wide.size() + 1 > *chars) return kRegMoreData;
  std::memcpy(buffer, wide.c_str(), (wide.size() + 1) * sizeof(wchar_t));
  *chars = static_cast<DWORD>(wide.size());
  return 0;
}

bool IsStringType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

}  // namespace

LONG RegApiOpenKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result) {
  return store::StoreOpenKey(base, Units(subKey), access, result);
}

LONG RegApiCreateKey(HKEY base, const wchar_t* subKey, DWORD access, HKEY* result, DWORD* disposition) {
  return store::StoreCreateKey(base, Units(subKey), access, result, disposition);
}

LONG RegApiQueryValue(HKEY key, const wchar_t* name, DWORD* type, BYTE* data, DWORD* size) {
  return store::StoreQueryValue(key, Units(name), type, data, size);
}

LONG RegApiSetValue(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) {
  return store::StoreSetValue(key, Units(name), type, data, size);
}

LONG RegApiSetValueA(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size) {
  const std::wstring wideName =
      name == nullptr ? std::wstring() : ToWide(CodePage::Ansi, name, std::strlen(name));
  if (!IsStringType(type) || data == nullptr) return RegApiSetValue(key, wideName.c_str(), type, data, size);
  // String data is stored wide, converted from the ANSI bytes given. As advapi32 does, a count
  // that stops just before a NUL takes the NUL in, for callers that pass the length without it.
  if (size > 0 && data[size - 1] != 0 && data[size] == 0) ++size;
  const std::wstring text = ToWide(CodePage::Ansi, reinterpret_cast<const char*>(data), size);
  const std::vector<std::uint16_t> units = ToUtf16(text);
  return store::StoreSetValue(key, Units(wideName.c_str()), type, reinterpret_cast<const BYTE*>(units.data()),
                              static_cast<DWORD>(units.size() * 2));
}

LONG RegApiDeleteValue(HKEY key, const wchar_t* name) { return store::StoreDeleteValue(key, Units(name)); }

LONG RegApiDeleteKey(HKEY base, const wchar_t* subKey) { return store::StoreDeleteKey(base, Units(subKey)); }

// The store has one view: the WOW64 view bits select nothing.
LONG RegApiDeleteKeyEx(HKEY base, const wchar_t* subKey, DWORD) { return RegApiDeleteKey(base, subKey); }

LONG RegApiEnumKey(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars) {
  std::u16string found;
  const LONG code = store::StoreEnumKey(key, index, found);
  return code != 0 ? code : CopyName(found, name, nameChars);
}

LONG RegApiEnumValue(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars) {
  std::u16string found;
  const LONG code = store::StoreEnumValue(key, index, found);
  return code != 0 ? code : CopyName(found, name, nameChars);
}

LONG RegApiQueryInfoKey(HKEY key, RegApiKeyInfo* info) {
  store::HiveKeyInfo got;
  const LONG code = store::StoreQueryInfoKey(key, got);
  if (code != 0) return code;
  info->subKeys = got.subKeys;
  info->maxSubKeyLen = got.maxSubKeyLen;
  info->values = got.values;
  info->maxValueNameLen = got.maxValueNameLen;
  info->maxValueLen = got.maxValueLen;
  info->lastWrite.dwLowDateTime = static_cast<DWORD>(got.lastWrite & 0xFFFFFFFF);
  info->lastWrite.dwHighDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(got.lastWrite) >> 32);
  return 0;
}

LONG RegApiFlushKey(HKEY key) { return store::StoreFlushKey(key); }

LONG RegApiCloseKey(HKEY key) { return store::StoreCloseKey(key); }

LONG RegApiConnect(const wchar_t* machine, HKEY root, HKEY* result) {
  return store::StoreConnect(Units(machine), root, result);
}

LONG RegApiLoadKey(HKEY root, const wchar_t* subKey, const wchar_t* fileName) {
  return store::StoreLoadKey(root, Units(subKey), FilePath(fileName));
}

LONG RegApiUnLoadKey(HKEY root, const wchar_t* subKey) { return store::StoreUnLoadKey(root, Units(subKey)); }

LONG RegApiSaveKey(HKEY key, const wchar_t* fileName) { return store::StoreSaveKey(key, FilePath(fileName)); }

LONG RegApiRestoreKey(HKEY key, const wchar_t* fileName, DWORD) {
  return store::StoreRestoreKey(key, FilePath(fileName));
}

LONG RegApiReplaceKey(HKEY base, const wchar_t* subKey, const wchar_t* newFileName,
                      const wchar_t* oldFileName) {
  return store::StoreReplaceKey(base, Units(subKey), FilePath(newFileName), FilePath(oldFileName));
}

// Linux is an NT-like platform here; names are doubled when the ANSI page is a double-byte one,
// as Windows reports SM_DBCSENABLED for those pages.
bool RegApiNameLengthsDoubled(bool& doubled) {
  doubled = linux_impl::AnsiCodePage::Get().IsDoubleByte();
  return true;
}

}  // namespace DE::detail
