// The running operating system's version numbers, service pack, processor architecture and
// display name, read once when an OSVersion is constructed.
//
// Windows: the numbers come from the workstation service (NetWkstaGetInfo, which reports no build,
// so the build is 0), else from kernel32.dll's version resource, because GetVersionExW
// under-reports on newer releases; a release without a name of its own (10 and later) is named
// "Windows".
//
// Linux: major, minor and build are the first three numbers of the kernel release ("6.1.0-18-amd64"
// gives 6, 1, 0; a missing number is 0); the name is PRETTY_NAME of os-release, read under the
// system root UTIL_SYSROOT (default "/") from etc/os-release, else usr/lib/os-release, and "Linux"
// (os-release's own default) when neither file names it. The kernel release and machine are read
// from proc/sys/kernel/osrelease and proc/sys/kernel/arch under the system root when present,
// else from uname(). Service pack numbers and the platform are 0.
#pragma once

#include <string>

#include "UtilExport.h"

namespace DE {

class UTIL_API OSVersion {
 public:
  enum Architecture {
    X86 = 0,  // anything that is not x64
    X64 = 1,  // AMD64 / x86_64
  };
  enum Platform {
    WindowsNT = 0,  // the only value a constructed object holds
  };

  // Queries the system; failed queries leave zeros and an empty name. Never throws.
  OSVersion();
  OSVersion(const OSVersion& other) = default;
  OSVersion& operator=(const OSVersion& other) = default;

  Architecture ArchitectureGet() const { return architecture_; }
  int Build() const { return build_; }
  int Major() const { return major_; }
  int Minor() const { return minor_; }
  std::wstring Name() const { return name_; }
  Platform PlatformGet() const { return platform_; }
  int ServicePackMajor() const { return servicePackMajor_; }
  int ServicePackMinor() const { return servicePackMinor_; }

  // At least the given version, compared lexicographically. The three-number form compares the
  // service-pack major number third, not the build.
  bool Check(int major) const;
  bool Check(int major, int minor) const;
  bool Check(int major, int minor, int sp) const;

 private:
  Architecture architecture_;
  int build_;
  int major_;
  int minor_;
  std::wstring name_;
  Platform platform_;
  int servicePackMajor_;
  int servicePackMinor_;
};

}  // namespace DE
