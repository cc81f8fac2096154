// OSVersion: the fields the platform query fills, and the version comparisons.
#include "DEOSVersion.h"

#include "foundation/os_version_detail.h"

namespace DE {

OSVersion::OSVersion()
    : architecture_(X86),
      build_(0),
      major_(0),
      minor_(0),
      platform_(WindowsNT),
      servicePackMajor_(0),
      servicePackMinor_(0) {
  try {
    const detail::OsVersionFields fields = detail::QueryOsVersion();
    architecture_ = fields.architecture == 1 ? X64 : X86;
    build_ = fields.build;
    major_ = fields.major;
    minor_ = fields.minor;
    name_ = fields.name;
    platform_ = static_cast<Platform>(fields.platform);
    servicePackMajor_ = fields.servicePackMajor;
    servicePackMinor_ = fields.servicePackMinor;
  } catch (...) {
    // Out of memory while reading: the object keeps whatever was set, zeros otherwise.
  }
}

bool OSVersion::Check(int major) const { return major_ >= major; }

bool OSVersion::Check(int major, int minor) const {
  if (major_ != major) return major_ > major;
  return minor_ >= minor;
}

bool OSVersion::Check(int major, int minor, int sp) const {
  if (major_ != major) return major_ > major;
  if (minor_ != minor) return minor_ > minor;
  return servicePackMajor_ >= sp;
}

}  // namespace DE
