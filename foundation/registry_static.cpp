// DE::Registry: the one-call static operations, the root-name split and the service-path quoting.
#include <algorithm>
#include <cstdint>
#include <string>

#include "DERegistry.h"
#include "DEString.h"
#include "foundation/registry_api.h"
#include "foundation/registry_internal.h"
#include "foundation/text_codec.h"
#include "foundation/utf16.h"

namespace DE {

namespace {

constexpr size_t kServicePathBuffer = 260;

bool QueryDword(HKEY key, const std::wstring& name, void* out) {
  DWORD type = 0;
  DWORD size = 4;
  return detail::RegApiQueryValue(key, name.c_str(), &type, static_cast<BYTE*>(out), &size) == 0 &&
         type == REG_DWORD;
}

bool SetDword(HKEY root, const std::wstring& path, const std::wstring& name, std::uint32_t value,
              unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKey(path, true)) return false;
  return detail::RegApiSetValue(registry.GetCurrentKey(), name.c_str(), REG_DWORD,
                                reinterpret_cast<const BYTE*>(&value), sizeof(value)) == 0;
}

// What "%ws" makes of the text in a narrow buffer of 260 bytes: ANSI text, cut to fit.
std::string NarrowForBuffer(const std::wstring& text) {
  std::string narrow = detail::FromWide(detail::CodePage::Ansi, text.data(), text.size());
  if (narrow.size() > kServicePathBuffer - 1) narrow.resize(kServicePathBuffer - 1);
  return narrow;
}

}  // namespace

bool Registry::GetValue(HKEY root, const std::wstring& path, const std::wstring& name, unsigned long& out,
                        unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  std::uint32_t value = 0;
  if (!QueryDword(registry.CurrentKey, name, &value)) return false;
  out = value;
  return true;
}

bool Registry::GetValue(HKEY root, const std::wstring& path, const std::wstring& name, int& out,
                        unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  // The data lands in out whatever its type; only a REG_DWORD counts as success.
  return QueryDword(registry.CurrentKey, name, &out);
}

bool Registry::GetValue(HKEY root, const std::wstring& path, const std::wstring& name, std::wstring& out,
                        unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  return registry.ReadString(name, out);
}

bool Registry::GetValue(HKEY root, const std::wstring& path, const std::wstring& name, void* buffer,
                        int bufferSize, int& size, unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  return registry.ReadBinaryData(name, buffer, bufferSize, size);
}

bool Registry::SetValue(HKEY root, const std::wstring& path, const std::wstring& name, int const& value,
                        unsigned long access) {
  return SetDword(root, path, name, static_cast<std::uint32_t>(value), access);
}

bool Registry::SetValue(HKEY root, const std::wstring& path, const std::wstring& name,
                        unsigned long const& value, unsigned long access) {
  return SetDword(root, path, name, static_cast<std::uint32_t>(value), access);
}

bool Registry::SetValue(HKEY root, const std::wstring& path, const std::wstring& name,
                        std::wstring const& value, unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKey(path, true)) return false;
  return registry.WriteString(name, value);
}

bool Registry::SetValue(HKEY root, const std::wstring& path, const std::wstring& name, void* buffer, int size,
                        unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKey(path, true)) return false;
  return registry.WriteBinaryData(name, buffer, size);
}

bool Registry::GetKeys(HKEY root, const std::wstring& path, std::vector<std::wstring>& names,
                       unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  return registry.GetKeyNames(names);
}

bool Registry::GetNames(HKEY root, const std::wstring& path, std::vector<std::wstring>& names,
                        unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(path)) return false;
  return registry.GetValueNames(names);
}

bool Registry::DelName(HKEY root, const std::wstring& path, const std::wstring& name, unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  if (!registry.OpenKey(path, true)) return false;
  return detail::RegApiDeleteValue(registry.CurrentKey, name.c_str()) == 0;
}

bool Registry::DelKey(HKEY root, const std::wstring& path, unsigned long access) {
  Registry registry(access);
  registry.SetRootKey(root);
  return registry.DeleteKey(path);
}

HKEY Registry::FeathRootKey(std::wstring path, std::wstring& rest) {
  if (!path.empty() && path[0] == L'\\') path.erase(0, 1);
  rest = path;
  const std::wstring head = UpperCase(Fetch(rest, L"\\"));
  const HKEY root = detail::RootKeyByName(head);
  if (root != nullptr) return root;
  rest = path;
  return RootKey;
}

void Registry::SetRegQDAServicePath(bool quote) {
  HKEY key = nullptr;
  if (detail::RegApiOpenKey(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Services\\QDAMainService",
                            KEY_ALL_ACCESS, &key) != 0) {
    return;
  }
  // A 260-character buffer offered as 260 bytes: at most 130 UTF-16 units come back.
  std::uint16_t units[kServicePathBuffer] = {};
  DWORD type = 0;
  DWORD size = kServicePathBuffer;
  const LONG read = detail::RegApiQueryValue(key, L"ImagePath", &type, reinterpret_cast<BYTE*>(units), &size);
  units[kServicePathBuffer - 1] = 0;
  // A value that could not be read is left alone rather than overwritten with an empty path.
  if (read == 0) {
    const size_t length = std::find(units, units + kServicePathBuffer, 0) - units;
    const std::wstring text = detail::FromUtf16(units, length);
    std::string narrow;
    bool write = false;
    if (quote && (length == 0 || units[0] != u'"') && length < 258) {
      narrow = NarrowForBuffer(L"\"" + text + L"\"");
      write = true;
    } else if (!quote && length > 0 && units[0] == u'"' && length < 260) {
      std::wstring bare = text;
      bare.erase(std::remove(bare.begin(), bare.end(), L'"'), bare.end());
      narrow = NarrowForBuffer(bare);
      write = true;
    }
    // The length written leaves out the terminating NUL, as the service's installers expect.
    if (write) {
      detail::RegApiSetValueA(key, "ImagePath", type, reinterpret_cast<const BYTE*>(narrow.data()),
                              static_cast<DWORD>(narrow.size()));
    }
  }
  detail::RegApiCloseKey(key);
}

}  // namespace DE
