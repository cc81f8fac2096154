// CommonCfgMgr: the instance, its defaults and the reading of commoncfg.xml.
#include "CommonCfgMgr.h"

#include <exception>

#include "DEOSVersion.h"
#include "DERegistry.h"
#include "DEString.h"
#include "SystemInfo.h"
#include "ZnXml.h"
#include "config/config_values.h"
#include "config/module_path.h"

namespace {

// A text value under HKLM "SOFTWARE\PXS Core" (64-bit view), in the ANSI code page; "" when absent.
std::string PxsCoreValue(const wchar_t* name) {
  std::wstring value;
  if (!DE::Registry::GetValue(HKEY_LOCAL_MACHINE, L"SOFTWARE\\PXS Core", name, value, KEY_WOW64_64KEY))
    return "";
  return DE::UnicodeToANSI(value);
}

bool IsOn(const ZnXmlElement& section, const char* name) {
  const std::string text = section.FirstNode(name).Value();
  return text == "1" || text == "true";
}

}  // namespace

CommonCfgMgr* CommonCfgMgr::GetInstance() {
  static CommonCfgMgr instance;  // C++11 guarantees one construction, finished before any use
  return &instance;
}

CommonCfgMgr::CommonCfgMgr() { ReadConfigFile(ConfigFilePath()); }

CommonCfgMgr::CommonCfgMgr(const std::string& path, FactSource facts) : fact_(facts) { ReadConfigFile(path); }

CommonCfgMgr::CommonCfgMgr(const CommonCfgMgr& other) = default;
CommonCfgMgr& CommonCfgMgr::operator=(const CommonCfgMgr& other) = default;
CommonCfgMgr::~CommonCfgMgr() = default;

std::string CommonCfgMgr::ConfigFilePath() {
  return DE::detail::JoinPath(DE::detail::LibraryFolder(), {"config", "commoncfg.xml"});
}

std::string CommonCfgMgr::SystemFact(Fact fact) {
  switch (fact) {
    case Fact::ComponentVersion:
      return PxsCoreValue(L"C_version");
    case Fact::PxsCoreVersion:
      return PxsCoreValue(L"Version");
    case Fact::OsVersion: {
      const DE::OSVersion os;
      return std::to_string(os.Major()) + "." + std::to_string(os.Minor()) + "." + std::to_string(os.Build());
    }
    case Fact::DeviceType:
      return SystemInfo().GetDeviceType();
    case Fact::SerialNumber:
      return SystemInfo().GetDeviceSerialNumberEx();
  }
  return std::string();
}

void CommonCfgMgr::ReadConfigFile(const std::string& path) {
  using DE::detail::ReadChildInt;
  using DE::detail::ReadChildList;
  using DE::detail::ReadChildText;
  if (path.empty()) return;
  try {
    ZnXMLDocument doc;
    if (doc.LoadFile(path) != ZnXmlSuccess) return;
    const ZnXmlElement root = doc.RootElement();
    if (root.IsElementNull()) return;

    ReadChildText(root, "ZOTAQuorixHostURL", quorixHostUrl_);
    ReadChildText(root, "ZOTAValidTestURL", quorixZotaTestUrl_);
    ReadChildText(root, "HotSpotValidTestURL", hotSpotTestUrl_);
    ReadChildText(root, "HotSpotValidTestURLBackUp", hotSpotTestUrlBackUp_);
    ReadChildInt(root, "BatteryPrecent", batteryPercent_);  // the file format's own spelling
    ReadChildText(root, "ZOTAQuorixCheckURL", zotaQuorixCheckUrl_);
    ReadChildText(root, "ZOTAQuorixReportURL", zotaQuorixReportUrl_);
    ReadChildText(root, "ZOTACheckURL", zotaCheckUrl_);
    ReadChildText(root, "ZOTAReportURL", zotaReportUrl_);
    ReadChildInt(root, "QueryNums", queryNums_);
    ReadChildInt(root, "QueryPeriod", queryPeriod_);
    ReadChildInt(root, "QueryLocalPeriod", queryLocalPeriod_);
    ReadChildInt(root, "RetailQueryPeriod", queryRetailPeriod_);
    ReadChildInt(root, "InitTime", initTime_);
    int filterSwitch = filterSwitch_ ? 1 : 0;
    ReadChildInt(root, "FilterSwitch", filterSwitch);
    filterSwitch_ = filterSwitch != 0;
    ReadChildInt(root, "FilterDays", filterDays_);
    ReadChildInt(root, "FilterTimes", filterTimes_);

    const ZnXmlElement update = root.FirstNode("update");
    if (!update.IsElementNull()) {
      // An empty device type must not pick "any first child": it goes straight to "default".
      const std::string deviceType = fact_(Fact::DeviceType);
      ZnXmlElement section = deviceType.empty() ? ZnXmlElement() : update.FirstNode(deviceType);
      if (section.IsElementNull()) section = update.FirstNode("default");
      autoUpdate_ = IsOn(section, "AutoUpdate");
      forceUpdate_ = IsOn(section, "ForceUpdate");
      ReadChildList(section, "IdleExclude", idleExclude_);
      ReadChildList(section, "PackageExclude", packageExclude_);
      ReadChildList(section, "PackageInclude", packageInclude_);
      ReadChildList(section, "PXSCoreVersion", pxsCoreVersions_);
      ReadChildList(section, "C_version", cVersions_);
      ReadChildList(section, "OS", operatingSystems_);
      ReadChildList(section, "DeviceName", deviceNames_);
    }
    ReadChildInt(root, "TestMode", testMode_);
  } catch (const std::exception&) {
    // Whatever was read stays; the rest keeps its defaults.
  }
}
