// Linux lookup of the application-data folder (XDG base directories). Only Linux-specific code
// goes in this file.
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "config/app_data.h"

namespace DE::detail {

namespace {

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  const passwd* entry = getpwuid(geteuid());  // services may run without HOME
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "";
}

}  // namespace

std::string LibraryAppDataFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && data[0] == '/') return std::string(data) + "/Util";
  const std::string home = HomeFolder();
  return home.empty() ? std::string() : home + "/.local/share/Util";
}

}  // namespace DE::detail
