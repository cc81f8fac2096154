// Facts about the running system. SystemInfo has no state of its own: every call reads afresh.
#pragma once

#include <string>

#include "UtilExport.h"

class UTIL_API SystemInfo {
 public:
  // The device-type name that the configuration files use as section names (a child of "update"
  // in commoncfg.xml). "" when the device is not identified: until the firmware (SMBIOS) reader
  // supplies the product identity, that is every device, so configuration falls back to its
  // "default" sections.
  std::string GetDeviceType();
  // The device serial number as text; "" when unknown (again until the SMBIOS reader arrives).
  std::string GetDeviceSerialNumberEx();
};
