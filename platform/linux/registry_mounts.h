// Hive files that stand as keys directly below a root of the registry store: HKEY_USERS\<name>
// (the folder users/: each user's own hive and the hives loaded there) and
// HKEY_LOCAL_MACHINE\<name> (the folder machine/: loaded hives only). A loaded hive is a symbolic
// link to the file it was loaded from. A file's name is its key name with every UTF-16 unit
// outside [A-Za-z0-9._-] written as %XXXX, followed by ".hive", so every key name has a file
// name; lookups ignore case, as key names do. Linux-only code.
#pragma once

#include <string>
#include <vector>

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

// The file name (without ".hive") that holds the key `name`, and back; false for a file name
// this store did not make.
std::string HiveFileStem(const std::u16string& name);
bool KeyNameOfStem(const std::string& stem, std::u16string& name);

// The hive file standing for `name` in folder, matched without regard to case; "" when none.
std::string FindMountedHive(const std::string& folder, const std::u16string& name);
// The key names of the folder's hive files, in the order the registry lists sub-keys.
std::vector<std::u16string> MountedNames(const std::string& folder);
// Links folder/<name>.hive to the absolute path of file; ERROR_ALREADY_EXISTS when the name is
// taken (in any case).
LONG MountHive(const std::string& folder, const std::u16string& name, const std::string& file);
// Removes the link of a loaded hive and gives its path; ERROR_FILE_NOT_FOUND when nothing stands
// for name, ERROR_ACCESS_DENIED when it is a hive file of the store (a user's own hive).
LONG UnmountHive(const std::string& folder, const std::u16string& name, std::string& link);

}  // namespace DE::detail::linux_impl
