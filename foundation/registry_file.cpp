// .reg files applied to and taken from the registry, through the registry binding.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "DERegistry.h"
#include "DERegistryFile.h"
#include "DEString.h"
#include "foundation/registry_api.h"
#include "foundation/registry_file.h"
#include "foundation/registry_internal.h"

namespace DE {

namespace {

constexpr int kInvalidData = 13;
constexpr int kInvalidParameter = 87;

LONG ExportKey(HKEY key, const std::wstring& path, std::vector<detail::RegFileKey>& out) {
  detail::RegApiKeyInfo info;
  LONG code = detail::RegApiQueryInfoKey(key, &info);
  if (code != 0) return code;
  detail::RegFileKey entry;
  entry.path = path;
  std::vector<wchar_t> name(std::max(info.maxValueNameLen, info.maxSubKeyLen) + 2);
  // One read per value into a buffer sized by the key's longest data; a value that grew since
  // the key info was taken is read again at its new size.
  std::string data(info.maxValueLen, '\0');
  for (DWORD index = 0; index < info.values; ++index) {
    DWORD chars = static_cast<DWORD>(name.size());
    if (detail::RegApiEnumValue(key, index, name.data(), &chars) != 0) continue;
    detail::RegFileValue value;
    value.name.assign(name.data(), chars);
    DWORD size = static_cast<DWORD>(data.size());
    code = detail::RegApiQueryValue(key, value.name.c_str(), &value.type, reinterpret_cast<BYTE*>(&data[0]),
                                    &size);
    if (code == detail::kRegMoreData) {
      data.resize(size);
      code = detail::RegApiQueryValue(key, value.name.c_str(), &value.type, reinterpret_cast<BYTE*>(&data[0]),
                                      &size);
      if (code != 0) return code;
    } else if (code != 0) {
      continue;  // gone or unreadable since it was listed
    }
    value.data.assign(data, 0, size);
    entry.values.push_back(std::move(value));
  }
  out.push_back(entry);
  for (DWORD index = 0; index < info.subKeys; ++index) {
    DWORD chars = static_cast<DWORD>(name.size());
    if (detail::RegApiEnumKey(key, index, name.data(), &chars) != 0) continue;
    const std::wstring child(name.data(), chars);
    HKEY sub = nullptr;
    if (detail::RegApiOpenKey(key, child.c_str(), KEY_READ, &sub) != 0) continue;
    code = ExportKey(sub, path + L"\\" + child, out);
    detail::RegApiCloseKey(sub);
    if (code != 0) return code;
  }
  return 0;
}

bool ReadFile(const std::wstring& fileName, std::string& bytes) {
  std::ifstream in(std::filesystem::path(fileName), std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

LONG ApplyKey(const detail::RegFileKey& key, HKEY root, const std::wstring& rest) {
  if (key.remove) {
    Registry registry;
    registry.SetRootKey(root);
    if (!registry.DeleteKey(L"\\" + rest) && registry.GetLastError() != 2) return registry.GetLastError();
    return 0;
  }
  HKEY handle = nullptr;
  LONG code = detail::RegApiCreateKey(root, rest.c_str(), KEY_ALL_ACCESS, &handle, nullptr);
  if (code != 0) return code;
  for (const detail::RegFileValue& value : key.values) {
    if (value.remove) {
      code = detail::RegApiDeleteValue(handle, value.name.c_str());
      if (code == 2) code = 0;
    } else {
      code = detail::RegApiSetValue(handle, value.name.c_str(), value.type,
                                    reinterpret_cast<const BYTE*>(value.data.data()),
                                    static_cast<DWORD>(value.data.size()));
    }
    if (code != 0) break;
  }
  detail::RegApiCloseKey(handle);
  return code;
}

}  // namespace

int ExportRegistryText(HKEY root, const std::wstring& path, std::wstring& text) {
  const std::wstring rootName = detail::RootKeyName(root);
  if (rootName.empty()) return kInvalidParameter;
  bool relative = true;
  const std::wstring sub = detail::StripPath(path, relative);
  HKEY key = nullptr;
  LONG code = detail::RegApiOpenKey(root, sub.c_str(), KEY_READ, &key);
  if (code != 0) return code;
  std::vector<detail::RegFileKey> keys;
  code = ExportKey(key, sub.empty() ? rootName : rootName + L"\\" + sub, keys);
  detail::RegApiCloseKey(key);
  if (code == 0) text = detail::FormatRegFile(keys);
  return code;
}

int ExportRegistryFile(HKEY root, const std::wstring& path, const std::wstring& fileName) {
  std::wstring text;
  const int code = ExportRegistryText(root, path, text);
  if (code != 0) return code;
  const std::string bytes = detail::EncodeRegFileBytes(text);
  std::ofstream out(std::filesystem::path(fileName), std::ios::binary | std::ios::trunc);
  if (!out || !out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) || !out.flush()) {
    return 29;  // ERROR_WRITE_FAULT
  }
  return 0;
}

int ImportRegistryText(const std::wstring& text) {
  std::vector<detail::RegFileKey> keys;
  std::string error;
  if (!detail::ParseRegFile(text, keys, error)) return kInvalidData;
  int result = 0;
  for (const detail::RegFileKey& key : keys) {
    std::wstring rest = key.path;
    const HKEY root = detail::RootKeyByName(UpperCase(Fetch(rest, L"\\")));
    if (root == nullptr) {
      result = kInvalidParameter;
      continue;
    }
    const LONG code = ApplyKey(key, root, rest);
    if (code != 0) return code;
  }
  return result;
}

int ImportRegistryFile(const std::wstring& fileName) {
  std::string bytes;
  if (!ReadFile(fileName, bytes)) return 2;  // ERROR_FILE_NOT_FOUND
  return ImportRegistryText(detail::DecodeRegFileBytes(bytes));
}

}  // namespace DE
