// OS version command: every field OSVersion reads from the running system.
#include "DEOSVersion.h"
#include "DEString.h"
#include "command.h"

namespace utl {
namespace {

int OsVersion(const std::vector<std::string>& args) {
  if (!args.empty()) return UsageError("osversion", "takes no arguments");
  const DE::OSVersion v;
  PrintLine("name          " + DE::StringProc::WStringToStringByUTF8(v.Name()));
  PrintLine("major         " + std::to_string(v.Major()));
  PrintLine("minor         " + std::to_string(v.Minor()));
  PrintLine("build         " + std::to_string(v.Build()));
  PrintLine("service pack  " + std::to_string(v.ServicePackMajor()) + "." +
            std::to_string(v.ServicePackMinor()));
  PrintLine("architecture  " + std::to_string(v.ArchitectureGet()) +
            (v.ArchitectureGet() == DE::OSVersion::X64 ? " (x64)" : " (not x64)"));
  PrintLine("platform      " + std::to_string(v.PlatformGet()));
  return 0;
}

UTL_COMMAND("osversion", "", "version numbers, service pack, architecture and name of the OS", OsVersion);

}  // namespace
}  // namespace utl
