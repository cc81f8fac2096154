// Hive files standing as keys below HKEY_USERS and HKEY_LOCAL_MACHINE. Linux-only code.
#include "platform/linux/registry_mounts.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "platform/linux/registry_error.h"
#include "platform/linux/registry_hive.h"
#include "platform/linux/system_calls.h"

namespace DE::detail::linux_impl {

namespace {

const std::string kSuffix = ".hive";

bool KeptAsIs(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9') ||
         unit == u'-' || unit == u'_' || unit == u'.';
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The stems of the folder's "*.hive" entries.
std::vector<std::string> HiveStems(const std::string& folder) {
  std::vector<std::string> stems;
  DIR* directory = ::opendir(folder.c_str());
  if (directory == nullptr) return stems;
  while (const dirent* entry = ::readdir(directory)) {
    const std::string name = entry->d_name;
    if (name.size() > kSuffix.size() &&
        name.compare(name.size() - kSuffix.size(), kSuffix.size(), kSuffix) == 0) {
      stems.push_back(name.substr(0, name.size() - kSuffix.size()));
    }
  }
  ::closedir(directory);
  return stems;
}

}  // namespace

std::string HiveFileStem(const std::u16string& name) {
  std::string stem;
  for (size_t i = 0; i < name.size(); ++i) {
    // "." and ".." are folders, not names: their dots are escaped like other units.
    if (KeptAsIs(name[i]) && !(name[i] == u'.' && i == 0)) {
      stem.push_back(static_cast<char>(name[i]));
    } else {
      char escaped[6];
      std::snprintf(escaped, sizeof(escaped), "%%%04X", static_cast<unsigned>(name[i]));
      stem += escaped;
    }
  }
  return stem;
}

bool KeyNameOfStem(const std::string& stem, std::u16string& name) {
  name.clear();
  for (size_t i = 0; i < stem.size();) {
    if (stem[i] != '%') {
      if (!KeptAsIs(static_cast<unsigned char>(stem[i]))) return false;
      name.push_back(static_cast<unsigned char>(stem[i++]));
      continue;
    }
    if (i + 5 > stem.size()) return false;
    unsigned unit = 0;
    for (size_t k = 1; k <= 4; ++k) {
      const int digit = HexDigit(stem[i + k]);
      if (digit < 0) return false;
      unit = unit * 16 + static_cast<unsigned>(digit);
    }
    name.push_back(static_cast<char16_t>(unit));
    i += 5;
  }
  return !name.empty();
}

std::string FindMountedHive(const std::string& folder, const std::u16string& name) {
  // The name as written is the common case and costs one lookup; another spelling needs a scan.
  const std::string exact = folder + "/" + HiveFileStem(name) + kSuffix;
  struct stat info;
  if (Sys().lstat(exact.c_str(), &info) == 0) return exact;
  const std::string folded = FoldName(name);
  for (const std::string& stem : HiveStems(folder)) {
    std::u16string candidate;
    if (KeyNameOfStem(stem, candidate) && FoldName(candidate) == folded) return folder + "/" + stem + kSuffix;
  }
  return std::string();
}

std::vector<std::u16string> MountedNames(const std::string& folder) {
  std::vector<std::pair<std::string, std::u16string>> sorted;
  for (const std::string& stem : HiveStems(folder)) {
    std::u16string name;
    if (KeyNameOfStem(stem, name)) sorted.emplace_back(FoldName(name), name);
  }
  std::sort(sorted.begin(), sorted.end());
  std::vector<std::u16string> names;
  for (auto& entry : sorted) names.push_back(std::move(entry.second));
  return names;
}

LONG MountHive(const std::string& folder, const std::u16string& name, const std::string& file) {
  if (!FindMountedHive(folder, name).empty()) return static_cast<LONG>(kErrorAlreadyExists);
  char absolute[PATH_MAX];
  if (::realpath(file.c_str(), absolute) == nullptr) return static_cast<LONG>(LastWin32ErrorFromErrno());
  if (Sys().mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST)
    return static_cast<LONG>(LastWin32ErrorFromErrno());
  const std::string link = folder + "/" + HiveFileStem(name) + kSuffix;
  if (Sys().symlink(absolute, link.c_str()) != 0) {
    return static_cast<LONG>(errno == EEXIST ? kErrorAlreadyExists : LastWin32ErrorFromErrno());
  }
  return 0;
}

LONG UnmountHive(const std::string& folder, const std::u16string& name, std::string& link) {
  link = FindMountedHive(folder, name);
  if (link.empty()) return static_cast<LONG>(kErrorFileNotFound);
  struct stat info;
  if (Sys().lstat(link.c_str(), &info) != 0) return static_cast<LONG>(LastWin32ErrorFromErrno());
  if (!S_ISLNK(info.st_mode)) return static_cast<LONG>(kErrorAccessDenied);
  return Sys().unlink(link.c_str()) == 0 ? 0 : static_cast<LONG>(LastWin32ErrorFromErrno());
}

}  // namespace DE::detail::linux_impl
