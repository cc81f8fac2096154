// Device identity of SystemInfo, as far as the configuration readers need it.
#include "SystemInfo.h"

// The firmware tables that name the product and its serial number are read by the SMBIOS reader;
// until it is wired in, the device is unidentified and both answers are empty.
std::string SystemInfo::GetDeviceType() { return std::string(); }

std::string SystemInfo::GetDeviceSerialNumberEx() { return std::string(); }
