// The suite's common configuration: "config\commoncfg.xml" in the folder of the library itself
// (Linux: the folder holding libUtil.so, "config/commoncfg.xml"). Read once, when the instance is
// created; never written back. Every failure (no library path, missing or damaged file, missing
// elements) leaves the defaults and is not reported. Read-only after construction, so any thread
// may call the getters.
//
// Values that the support tests judge, and where they come from (each read when a test asks for it,
// so a test reads only its own value):
//   installed component version (C_version): HKLM "SOFTWARE\PXS Core" value "C_version" (64-bit
//     view), "" when absent;
//   operating-system version (OS): "<major>.<minor>.<build>" of DE::OSVersion, e.g. "10.0.0" on
//     Windows (the workstation service reports no build) or "6.1.0" for a Linux 6.1.0 kernel;
//   PXS core version (PXSCoreVersion): HKLM "SOFTWARE\PXS Core" value "Version", "" when absent;
//   device type and serial number: SystemInfo::GetDeviceType / GetDeviceSerialNumberEx.
// A pattern list is judged by regular-expression search (ECMAScript, anywhere in the value); an
// entry that is not a valid expression, or longer than 1024 characters, matches nothing.
#pragma once

#include <string>
#include <vector>

#include "UtilExport.h"

class UTIL_API CommonCfgMgr {
 public:
  // The single instance, created (and the file read) on the first call; never null.
  static CommonCfgMgr* GetInstance();

  CommonCfgMgr(const CommonCfgMgr& other);
  CommonCfgMgr& operator=(const CommonCfgMgr& other);
  virtual ~CommonCfgMgr();

  std::string GetQuorixHostURL() const { return quorixHostUrl_; }
  std::string GetQuorixZotaTestURL() const { return quorixZotaTestUrl_; }
  std::string GetHotSpotTestURL() const { return hotSpotTestUrl_; }
  std::string GetHotSpotTestURLBackUp() const { return hotSpotTestUrlBackUp_; }
  int GetBatteryPercent() const { return batteryPercent_; }  // 30 by default
  std::string GetZOTAQuorixCheckURL() const { return zotaQuorixCheckUrl_; }
  std::string GetZOTAQuorixReportURL() const { return zotaQuorixReportUrl_; }
  std::string GetZOTACheckURL() const { return zotaCheckUrl_; }
  std::string GetZOTAReportURL() const { return zotaReportUrl_; }
  int GetQueryNums() const { return queryNums_; }
  int GetQueryPeriod() const { return queryPeriod_; }
  int GetQueryQuorixPeriod() const { return queryQuorixPeriod_; }  // never read from the file: 0
  int GetQueryLocalPeriod() const { return queryLocalPeriod_; }
  int GetQueryRetailPeriod() const { return queryRetailPeriod_; }
  int GetInitTime() const { return initTime_; }
  bool IsFilterSwitchOpen() const { return filterSwitch_; }
  int GetFilterDays() const { return filterDays_; }
  int GetFilterTimes() const { return filterTimes_; }
  int GetTestMode() const { return testMode_; }
  bool IsEnableUpdate() const { return autoUpdate_; }      // true by default
  bool EnableForceUpdate() const { return forceUpdate_; }  // true by default

  // True when the idle-update exclusion list is empty or holds no entry equal to name
  // (whole string, case-sensitive).
  bool IsSupportIdleUpdate(const std::string& name);
  // True when the package and this machine pass every test: package, component version (asked
  // twice, as it always has been), operating system, device, serial number. The PXS core
  // version is not part of this chain.
  bool IsSupport(const std::string& package);

 private:
  // Defined by the tests and the utl tool to load a given file (tests: with fake facts).
  friend struct CommonCfgMgrInspector;

  // The machine values the support tests judge; see the file comment for their sources.
  enum class Fact { ComponentVersion, OsVersion, PxsCoreVersion, DeviceType, SerialNumber };
  using FactSource = std::string (*)(Fact fact);

  CommonCfgMgr();                                           // defaults, then the file beside the library
  CommonCfgMgr(const std::string& path, FactSource facts);  // defaults, then that file
  static std::string SystemFact(Fact fact);                 // reads the one value asked for
  static std::string ConfigFilePath();                      // "" when the library's folder cannot be found

  void ReadConfigFile(const std::string& path);

  bool IsSupportPackage(const std::string& package);
  bool IsSupportCVersion();
  bool IsSupportOS();
  bool IsSupportDevice();
  bool IsSupportIMEI();
  bool IsSupportNimbra();
  // Empty list: every value; otherwise some entry found (regex search) in value.
  bool IsSupport(const std::string& value, std::vector<std::string>& patterns);

  FactSource fact_ = &CommonCfgMgr::SystemFact;
  std::string quorixHostUrl_;
  std::string quorixZotaTestUrl_;
  std::string hotSpotTestUrl_;
  std::string hotSpotTestUrlBackUp_;
  int batteryPercent_ = 30;
  std::string zotaQuorixCheckUrl_;
  std::string zotaQuorixReportUrl_;
  std::string zotaCheckUrl_;
  std::string zotaReportUrl_;
  int queryNums_ = 0;
  int queryPeriod_ = 0;
  int queryQuorixPeriod_ = 0;
  int queryLocalPeriod_ = 0;
  int queryRetailPeriod_ = 0;
  int initTime_ = 0;
  bool filterSwitch_ = false;
  int filterDays_ = 0;
  int filterTimes_ = 0;
  int testMode_ = 0;
  bool autoUpdate_ = true;
  bool forceUpdate_ = true;
  std::vector<std::string> idleExclude_;
  std::vector<std::string> packageExclude_;
  std::vector<std::string> packageInclude_;
  std::vector<std::string> pxsCoreVersions_;
  std::vector<std::string> cVersions_;
  std::vector<std::string> operatingSystems_;
  std::vector<std::string> deviceNames_;
  std::vector<std::string> serialNumbers_;  // never filled from the file
};
