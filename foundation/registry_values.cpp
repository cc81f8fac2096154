// DE::Registry: the value operations on the current key.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "DERegistry.h"
#include "foundation/registry_api.h"
#include "foundation/registry_internal.h"
#include "foundation/utf16.h"

namespace DE {

namespace {

constexpr size_t kMaxStringChars = 0x3FFFFFFF;

const BYTE* Bytes(const void* data) { return static_cast<const BYTE*>(data); }

}  // namespace

bool Registry::GetDataInfo(const std::wstring& name, RegDataInfo& info) {
  info = RegDataInfo{rdUnknown, 0};
  DWORD type = 0;
  DWORD size = 0;
  if (!CheckResult(detail::RegApiQueryValue(CurrentKey, name.c_str(), &type, nullptr, &size))) return false;
  info.RegData = detail::DataTypeOf(type);
  info.DataSize = static_cast<int>(size);
  return true;
}

bool Registry::ValueExists(const std::wstring& name) {
  RegDataInfo info;
  return GetDataInfo(name, info);
}

int Registry::GetDataSize(const std::wstring& name) {
  RegDataInfo info;
  return GetDataInfo(name, info) ? info.DataSize : -1;
}

RegDataType Registry::GetDataType(const std::wstring& name) {
  RegDataInfo info;
  return GetDataInfo(name, info) ? info.RegData : rdUnknown;
}

bool Registry::GetData(const std::wstring& name, void* buffer, int& size, RegDataType& type) {
  DWORD registryType = 0;
  DWORD bytes = static_cast<DWORD>(size);
  if (detail::RegApiQueryValue(CurrentKey, name.c_str(), &registryType, static_cast<BYTE*>(buffer), &bytes) !=
      0) {
    return false;
  }
  size = static_cast<int>(bytes);
  type = detail::DataTypeOf(registryType);
  return true;
}

bool Registry::PutData(const std::wstring& name, const void* buffer, int size, RegDataType type) {
  return WriteTyped(name, detail::RegistryTypeOf(type), buffer, static_cast<DWORD>(size));
}

bool Registry::WriteTyped(const std::wstring& name, DWORD type, const void* data, DWORD size) {
  return detail::RegApiSetValue(CurrentKey, name.c_str(), type, Bytes(data), size) == 0;
}

bool Registry::ReadString(const std::wstring& name, std::wstring& out) {
  out.clear();
  RegDataInfo info;
  if (!GetDataInfo(name, info) || info.DataSize < 1) return false;
  // Whole UTF-16 units, plus one so the text always ends.
  std::vector<std::uint16_t> units(static_cast<size_t>(info.DataSize) / 2 + 2, 0);
  DWORD type = 0;
  DWORD size = static_cast<DWORD>(info.DataSize);
  if (detail::RegApiQueryValue(CurrentKey, name.c_str(), &type, reinterpret_cast<BYTE*>(units.data()),
                               &size) != 0) {
    return false;
  }
  if (type != REG_SZ && type != REG_EXPAND_SZ) return false;
  const size_t length = std::find(units.begin(), units.end(), 0) - units.begin();
  out = detail::FromUtf16(units.data(), length);
  return true;
}

bool Registry::ReadInteger(const std::wstring& name, int& out) {
  DWORD type = 0;
  DWORD size = 4;
  std::int32_t value = 0;
  if (detail::RegApiQueryValue(CurrentKey, name.c_str(), &type, reinterpret_cast<BYTE*>(&value), &size) !=
          0 ||
      type != REG_DWORD) {
    return false;
  }
  out = value;
  return true;
}

bool Registry::ReadBool(const std::wstring& name, bool& out) {
  int value = 0;
  if (!ReadInteger(name, value)) return false;
  out = value != 0;
  return true;
}

bool Registry::ReadFloat(const std::wstring& name, double& out) {
  DWORD type = 0;
  DWORD size = sizeof(double);
  double value = 0;
  if (detail::RegApiQueryValue(CurrentKey, name.c_str(), &type, reinterpret_cast<BYTE*>(&value), &size) !=
          0 ||
      type != REG_BINARY || size != sizeof(double)) {
    return false;
  }
  out = value;
  return true;
}

bool Registry::ReadBinaryData(const std::wstring& name, void* buffer, int bufferSize, int& size) {
  RegDataInfo info;
  if (!GetDataInfo(name, info)) return false;
  size = info.DataSize;
  if ((info.RegData != rdBinary && info.RegData != rdUnknown) || size > bufferSize) return false;
  RegDataType type = rdUnknown;
  return GetData(name, buffer, size, type);
}

bool Registry::WriteString(const std::wstring& name, const std::wstring& text) {
  std::vector<std::uint16_t> units = detail::ToUtf16(text);
  if (units.size() + 1 > kMaxStringChars) return false;
  units.push_back(0);
  return WriteTyped(name, REG_SZ, units.data(), static_cast<DWORD>(units.size() * 2));
}

bool Registry::WriteExpandString(const std::wstring& name, const std::wstring& text) {
  std::vector<std::uint16_t> units = detail::ToUtf16(text);
  if (units.size() + 1 > kMaxStringChars) return false;
  units.push_back(0);
  return WriteTyped(name, REG_EXPAND_SZ, units.data(), static_cast<DWORD>(units.size() * 2));
}

bool Registry::WriteInteger(const std::wstring& name, int value) {
  const std::int32_t data = value;
  return WriteTyped(name, REG_DWORD, &data, sizeof(data));
}

bool Registry::WriteBool(const std::wstring& name, bool value) { return WriteInteger(name, value ? 1 : 0); }

bool Registry::WriteFloat(const std::wstring& name, double value) {
  return WriteTyped(name, REG_BINARY, &value, sizeof(value));
}

bool Registry::WriteBinaryData(const std::wstring& name, const void* buffer, int size) {
  return WriteTyped(name, REG_BINARY, buffer, static_cast<DWORD>(size));
}

bool Registry::DeleteValue(const std::wstring& name) {
  return CheckResult(detail::RegApiDeleteValue(CurrentKey, name.c_str()));
}

bool Registry::RenameValue(const std::wstring& oldName, std::wstring& newName) {
  if (ValueExists(newName)) return false;
  int size = GetDataSize(oldName);
  if (size < 1) return false;
  std::vector<BYTE> data(static_cast<size_t>(size));
  RegDataType type = rdUnknown;
  if (!GetData(oldName, data.data(), size, type)) return false;
  if (!CheckResult(detail::RegApiDeleteValue(CurrentKey, oldName.c_str()))) return false;
  return PutData(newName, data.data(), size, type);
}

}  // namespace DE
