// libFuzzer target for the registry's outside input. First byte even: a .reg file, which must parse
// without reading out of bounds and, when it parses, format to text that parses to the same keys.
// First byte odd: a hive file of the Linux store, which must open to a Win32 code or a walkable hive.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "foundation/registry_file.h"
#include "platform/linux/registry_hive.h"

namespace {

namespace detail = DE::detail;
namespace linux_impl = DE::detail::linux_impl;

void Check(bool condition) {
  if (!condition) std::abort();
}

bool SameValue(const detail::RegFileValue& x, const detail::RegFileValue& y) {
  return x.name == y.name && x.remove == y.remove && (x.remove || (x.type == y.type && x.data == y.data));
}

bool SameKey(const detail::RegFileKey& x, const detail::RegFileKey& y) {
  return x.path == y.path && x.remove == y.remove &&
         std::equal(x.values.begin(), x.values.end(), y.values.begin(), y.values.end(), SameValue);
}

void FuzzRegText(const std::string& bytes) {
  std::vector<detail::RegFileKey> keys, again;
  std::string error;
  if (!detail::ParseRegFile(detail::DecodeRegFileBytes(bytes), keys, error)) return;
  // Names holding characters the text form cannot carry (line breaks, "]") are not round-trip safe.
  for (const auto& key : keys) {
    if (key.path.find_first_of(L"\r\n]") != std::wstring::npos) return;
    for (const auto& value : key.values) {
      if (value.name.find_first_of(std::wstring(L"\r\n\0", 3)) != std::wstring::npos) return;
    }
  }
  Check(detail::ParseRegFile(detail::FormatRegFile(keys), again, error));
  Check(std::equal(keys.begin(), keys.end(), again.begin(), again.end(), SameKey));
}

void Walk(linux_impl::Hive& hive, linux_impl::KeyId id, int depth) {
  linux_impl::HiveKeyInfo info;
  if (depth > 16 || hive.QueryInfo(id, info) != 0) return;
  for (DWORD i = 0; i < info.values && i < 64; ++i) {
    std::u16string name;
    DWORD type = 0;
    std::string data;
    if (hive.EnumValue(id, i, name) == 0) hive.QueryValue(id, name, type, data);
  }
  for (DWORD i = 0; i < info.subKeys && i < 64; ++i) {
    std::u16string name;
    linux_impl::KeyId child = 0;
    if (hive.EnumKey(id, i, name) == 0 && hive.Find(id, {name}, child) == 0) Walk(hive, child, depth + 1);
  }
}

void FuzzHiveFile(const std::string& bytes) {
  static const std::string file = "/tmp/reg_import_fuzz_" + std::to_string(::getpid()) + ".hive";
  for (const char* suffix : {"", "-wal", "-shm"}) ::unlink((file + suffix).c_str());
  std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  std::shared_ptr<linux_impl::Hive> hive;
  if (linux_impl::Hive::Open(file, false, false, true, 0, hive) == 0)
    Walk(*hive, linux_impl::kHiveRootKey, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0) {
    FuzzRegText(bytes);
  } else {
    FuzzHiveFile(bytes);
  }
  return 0;
}
