// libFuzzer target for the registry's outside input: .reg text and hive files.
//
// First byte even: the bytes are a .reg file. Parsing must end without reading out of bounds,
// and what parses must format to text that parses again to the same keys and values.
// First byte odd: the bytes are a hive file of the Linux store. Opening must end in a Win32 code
// or a hive whose keys and values can all be walked.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
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

bool SameKeys(const std::vector<detail::RegFileKey>& a, const std::vector<detail::RegFileKey>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i].path != b[i].path || a[i].remove != b[i].remove || a[i].values.size() != b[i].values.size())
      return false;
    for (size_t j = 0; j < a[i].values.size(); ++j) {
      const auto& x = a[i].values[j];
      const auto& y = b[i].values[j];
      if (x.name != y.name || x.remove != y.remove || (!x.remove && (x.type != y.type || x.data != y.data))) {
        return false;
      }
    }
  }
  return true;
}

void FuzzRegText(const std::string& bytes) {
  std::vector<detail::RegFileKey> keys;
  std::string error;
  if (!detail::ParseRegFile(detail::DecodeRegFileBytes(bytes), keys, error)) return;
  // Names holding characters the text form cannot carry (line breaks, "]") are not round-trip safe.
  for (const auto& key : keys) {
    if (key.path.find_first_of(L"\r\n]") != std::wstring::npos) return;
    for (const auto& value : key.values) {
      if (value.name.find_first_of(std::wstring(L"\r\n\0", 3)) != std::wstring::npos) return;
    }
  }
  std::vector<detail::RegFileKey> again;
  Check(detail::ParseRegFile(detail::FormatRegFile(keys), again, error));
  Check(SameKeys(keys, again));
}

void Walk(linux_impl::Hive& hive, linux_impl::KeyId id, int depth) {
  if (depth > 16) return;
  linux_impl::HiveKeyInfo info;
  if (hive.QueryInfo(id, info) != 0) return;
  for (DWORD i = 0; i < info.values && i < 64; ++i) {
    std::u16string name;
    if (hive.EnumValue(id, i, name) != 0) continue;
    DWORD type = 0;
    std::string data;
    hive.QueryValue(id, name, type, data);
  }
  for (DWORD i = 0; i < info.subKeys && i < 64; ++i) {
    std::u16string name;
    if (hive.EnumKey(id, i, name) != 0) continue;
    linux_impl::KeyId child = 0;
    if (hive.Find(id, {name}, child) == 0) Walk(hive, child, depth + 1);
  }
}

void FuzzHiveFile(const std::string& bytes) {
  static const std::string file = "/tmp/reg_import_fuzz_" + std::to_string(::getpid()) + ".hive";
  ::unlink(file.c_str());
  ::unlink((file + "-wal").c_str());
  ::unlink((file + "-shm").c_str());
  {
    std::ofstream out(file, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
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
