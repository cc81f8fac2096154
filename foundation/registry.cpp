// DE::Registry: construction, the path rule and the key operations, over the registry binding.
#include "DERegistry.h"

#include <algorithm>
#include <vector>

#include "foundation/registry_api.h"
#include "foundation/registry_internal.h"

namespace DE {

namespace {

// KEY_READ without KEY_NOTIFY: the second try of OpenKeyReadOnly.
constexpr DWORD kKeyReadNoNotify = KEY_READ & ~static_cast<DWORD>(KEY_NOTIFY);

}  // namespace

namespace detail {

std::wstring StripPath(const std::wstring& path, bool& relative) {
  relative = path.empty() || path[0] != L'\\';
  return relative ? path : path.substr(1);
}

RegDataType DataTypeOf(DWORD registryType) {
  switch (registryType) {
    case REG_SZ:
      return rdString;
    case REG_EXPAND_SZ:
      return rdExpandString;
    case REG_DWORD:
      return rdInteger;
    case REG_BINARY:
      return rdBinary;
    default:
      return rdUnknown;
  }
}

DWORD RegistryTypeOf(RegDataType dataType) {
  switch (dataType) {
    case rdString:
      return REG_SZ;
    case rdExpandString:
      return REG_EXPAND_SZ;
    case rdInteger:
      return REG_DWORD;
    case rdBinary:
      return REG_BINARY;
    default:
      return REG_NONE;
  }
}

namespace {

// In the order a root name is looked for.
const struct {
  const wchar_t* name;
  HKEY key;
} kRootNames[] = {
    {L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {L"HKEY_USERS", HKEY_USERS},
    {L"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
    {L"HKEY_PERFORMANCE_TEXT", HKEY_PERFORMANCE_TEXT},
    {L"HKEY_PERFORMANCE_NLSTEXT", HKEY_PERFORMANCE_NLSTEXT},
    {L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {L"HKEY_DYN_DATA", HKEY_DYN_DATA},
    {L"HKEY_CURRENT_USER_LOCAL_SETTINGS", HKEY_CURRENT_USER_LOCAL_SETTINGS},
};

}  // namespace

HKEY RootKeyByName(const std::wstring& upperName) {
  for (const auto& root : kRootNames) {
    if (upperName == root.name) return root.key;
  }
  return nullptr;
}

std::wstring RootKeyName(HKEY key) {
  for (const auto& root : kRootNames) {
    if (key == root.key) return root.name;
  }
  return std::wstring();
}

}  // namespace detail

Registry::Registry()
    : RootKey(HKEY_CURRENT_USER),
      CurrentKey(nullptr),
      LazyWrite(true),
      CloseRootKey(false),
      Access(KEY_ALL_ACCESS),
      LastError(0),  // left unset by the original design; 0 is harmless
      UseDeleteKeyEx(true) {}

Registry::Registry(unsigned long access) : Registry() {
  Access = access;
  LastError = 0;
}

Registry::~Registry() { CloseCurrent(); }

bool Registry::CheckResult(int code) {
  LastError = code;
  return code == 0;
}

HKEY Registry::GetBaseKey(bool relative) {
  return (CurrentKey == nullptr || !relative) ? RootKey : CurrentKey;
}

void Registry::CloseCurrent() {
  if (CurrentKey != nullptr) {
    if (!LazyWrite) detail::RegApiFlushKey(CurrentKey);
    detail::RegApiCloseKey(CurrentKey);
    CurrentKey = nullptr;
  }
  CurrentPath.clear();
}

void Registry::CloseKey() { CloseCurrent(); }

void Registry::ChangeCurrent(HKEY key, const std::wstring& path, bool relative) {
  std::wstring newPath = (CurrentKey != nullptr && relative) ? CurrentPath + L"\\" + path : path;
  CloseCurrent();
  CurrentKey = key;
  CurrentPath = newPath;
}

bool Registry::SetRootKey(HKEY key) {
  if (key == RootKey) return true;
  if (CloseRootKey) {
    detail::RegApiCloseKey(RootKey);
    CloseRootKey = false;
  }
  RootKey = key;
  CloseCurrent();
  return true;
}

bool Registry::OpenKey(const std::wstring& path, bool canCreate) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  const HKEY base = GetBaseKey(relative);
  HKEY key = nullptr;
  const LONG code = (canCreate && !sub.empty())
                        ? detail::RegApiCreateKey(base, sub.c_str(), Access, &key, nullptr)
                        : detail::RegApiOpenKey(base, sub.c_str(), Access, &key);
  if (!CheckResult(code)) return false;
  ChangeCurrent(key, sub, relative);
  return true;
}

bool Registry::OpenKey(HKEY root, const std::wstring& path, bool canCreate) {
  SetRootKey(root);
  return OpenKey(path, canCreate);
}

bool Registry::OpenKeyReadOnly(const std::wstring& path) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  const HKEY base = GetBaseKey(relative);
  const DWORD view = Access & detail::kRegViewMask;
  for (DWORD rights : {static_cast<DWORD>(KEY_READ), kKeyReadNoNotify, static_cast<DWORD>(KEY_QUERY_VALUE)}) {
    HKEY key = nullptr;
    if (CheckResult(detail::RegApiOpenKey(base, sub.c_str(), rights | view, &key))) {
      Access = rights | view;
      ChangeCurrent(key, sub, relative);
      return true;
    }
  }
  return false;
}

bool Registry::OpenKeyReadOnly(HKEY root, const std::wstring& path) {
  SetRootKey(root);
  return OpenKeyReadOnly(path);
}

bool Registry::CreateKey(const std::wstring& path) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  HKEY key = nullptr;
  const LONG code = detail::RegApiCreateKey(GetBaseKey(relative), sub.c_str(),
                                            KEY_ALL_ACCESS | (Access & detail::kRegViewMask), &key, nullptr);
  if (!CheckResult(code)) return false;
  detail::RegApiCloseKey(key);
  return true;
}

bool Registry::DeleteKey(const std::wstring& path) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  const HKEY base = GetBaseKey(relative);
  HKEY key = nullptr;
  if (detail::RegApiOpenKey(base, sub.c_str(), Access, &key) == 0) {
    const HKEY previous = CurrentKey;
    CurrentKey = key;
    RegKeyInfo info;
    if (GetKeyInfo(info) && info.NumSubKeys >= 1) {
      const int length = info.MaxSubKeyLen + 1;
      if (length <= 0) {
        CurrentKey = previous;
        detail::RegApiCloseKey(key);
        return false;
      }
      std::vector<wchar_t> name(static_cast<size_t>(length));
      // From the last index down, so each deletion leaves the lower indexes in place.
      for (int index = info.NumSubKeys - 1; index >= 0; --index) {
        std::fill(name.begin(), name.end(), L'\0');
        DWORD chars = static_cast<DWORD>(length);
        if (detail::RegApiEnumKey(key, static_cast<DWORD>(index), name.data(), &chars) == 0) {
          DeleteKey(std::wstring(name.data(), chars));
        }
      }
    }
    CurrentKey = previous;
    detail::RegApiCloseKey(key);
  }
  const LONG code = UseDeleteKeyEx
                        ? detail::RegApiDeleteKeyEx(base, sub.c_str(), Access & detail::kRegViewMask)
                        : detail::RegApiDeleteKey(base, sub.c_str());
  return CheckResult(code);
}

bool Registry::KeyExists(const std::wstring& path) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  HKEY key = nullptr;
  const DWORD rights = kKeyReadNoNotify | (Access & detail::kRegViewMask);
  if (detail::RegApiOpenKey(GetBaseKey(relative), sub.c_str(), rights, &key) != 0) return false;
  detail::RegApiCloseKey(key);
  return true;
}

bool Registry::HasSubKeys() {
  RegKeyInfo info;
  return GetKeyInfo(info) && info.NumSubKeys >= 1;
}

bool Registry::GetKeyInfo(RegKeyInfo& info) {
  info = RegKeyInfo{};
  if (CurrentKey == nullptr) return false;
  bool doubled = false;
  if (!detail::RegApiNameLengthsDoubled(doubled)) return false;
  detail::RegApiKeyInfo got;
  if (detail::RegApiQueryInfoKey(CurrentKey, &got) != 0) return false;
  info.NumSubKeys = static_cast<int>(got.subKeys);
  info.MaxSubKeyLen = static_cast<int>(got.maxSubKeyLen);
  info.NumValues = static_cast<int>(got.values);
  info.MaxValueLen = static_cast<int>(got.maxValueNameLen);
  info.MaxDataLen = static_cast<int>(got.maxValueLen);
  info.FileTime = got.lastWrite;
  // Enumeration buffers are sized from these lengths; a DBCS system gets twice the room.
  if (doubled) {
    info.MaxSubKeyLen *= 2;
    info.MaxValueLen *= 2;
  }
  return true;
}

bool Registry::GetKeyNames(std::vector<std::wstring>& names) {
  names.clear();
  RegKeyInfo info;
  if (!GetKeyInfo(info)) return false;
  const int length = info.MaxSubKeyLen + 1;
  if (length <= 0) return false;
  std::vector<wchar_t> name(static_cast<size_t>(length) + 1);
  // The buffer keeps the previous name when a single call fails; that name is listed again.
  for (int index = 0; index < info.NumSubKeys; ++index) {
    DWORD chars = static_cast<DWORD>(length);
    detail::RegApiEnumKey(CurrentKey, static_cast<DWORD>(index), name.data(), &chars);
    names.emplace_back(name.data());
  }
  return true;
}

bool Registry::GetValueNames(std::vector<std::wstring>& names) {
  names.clear();
  RegKeyInfo info;
  if (!GetKeyInfo(info)) return false;
  const int length = info.MaxValueLen + 1;
  if (length <= 0) return false;
  std::vector<wchar_t> name(static_cast<size_t>(length) + 1);
  for (int index = 0; index < info.NumValues; ++index) {
    std::fill(name.begin(), name.end(), L'\0');
    DWORD chars = static_cast<DWORD>(length);
    detail::RegApiEnumValue(CurrentKey, static_cast<DWORD>(index), name.data(), &chars);
    names.emplace_back(name.data());
  }
  return true;
}

bool Registry::RegistryConnect(const std::wstring& machineName) {
  HKEY remote = nullptr;
  if (!CheckResult(detail::RegApiConnect(machineName.c_str(), RootKey, &remote))) return false;
  RootKey = remote;
  CloseRootKey = true;
  return true;
}

bool Registry::LoadKey(const std::wstring& subKey, const std::wstring& fileName) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(subKey, relative);
  return detail::RegApiLoadKey(RootKey, sub.c_str(), fileName.c_str()) == 0;
}

bool Registry::UnLoadKey(const std::wstring& subKey) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(subKey, relative);
  return detail::RegApiUnLoadKey(RootKey, sub.c_str()) == 0;
}

bool Registry::SaveKey(const std::wstring& path, const std::wstring& fileName) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  HKEY key = nullptr;
  if (detail::RegApiOpenKey(GetBaseKey(relative), sub.c_str(), Access, &key) != 0) return false;
  const LONG code = detail::RegApiSaveKey(key, fileName.c_str());
  detail::RegApiCloseKey(key);
  return CheckResult(code);
}

bool Registry::RestoreKey(const std::wstring& path, const std::wstring& fileName) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  HKEY key = nullptr;
  if (detail::RegApiOpenKey(GetBaseKey(relative), sub.c_str(), Access, &key) != 0) return false;
  const LONG code = detail::RegApiRestoreKey(key, fileName.c_str(), 0);
  detail::RegApiCloseKey(key);
  return CheckResult(code);
}

bool Registry::ReplaceKey(const std::wstring& path, const std::wstring& newFileName,
                          const std::wstring& oldFileName) {
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  return CheckResult(
      detail::RegApiReplaceKey(GetBaseKey(relative), sub.c_str(), newFileName.c_str(), oldFileName.c_str()));
}

void Registry::MoveKey(const std::wstring&, const std::wstring&, bool) {}

}  // namespace DE
