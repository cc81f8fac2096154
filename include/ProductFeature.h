// Which optional product features this machine supports, from
// "config/product_adapter/ProductFeature.xml" beside the host executable, loaded once per process.
//
// Layout: a root element whose children are feature elements (names below, exact and
// case-sensitive); each holds a "support" or an "unsupport" child listing device keys, each ended
// by ";". The device key is ";" (the device name is empty), so a "support" list with any ";"
// switches a feature on, and an "unsupport" list without one does too. "support" wins over
// "unsupport"; a feature absent from the file keeps its previous value.
//
// Every getter returns the load status and gives `out` = the flag when the status is 0, false
// otherwise. Status: 0 loaded; -2 not loaded; -3 the path could not be formed (executable folder
// unknown, or the path is 260 bytes or longer); -4 missing, or a folder; -5 not parseable XML.
#pragma once

#include <string>

#include "UtilExport.h"

class ZnXmlElement;
struct ProductFeatureInspector;

namespace ProductAdapt {

class UTIL_API ProductFeature {
 public:
  // The process-wide object, loaded on first use (thread-safe one-time initialisation).
  static const ProductFeature& GetInstance();

  // Loads the file again and keeps its status. Not safe while other threads read.
  void Reset();

  int GetFingerprintStatus(bool& out) const { return Get(fingerprint_, out); }
  int GetBtGpioStatus(bool& out) const { return Get(btGpio_, out); }
  int GetWifiGpioStatus(bool& out) const { return Get(wifiGpio_, out); }
  int GetCpuPowerStatus(bool& out) const { return Get(cpuPower_, out); }
  int GetTriFingerSnipperStatus(bool& out) const { return Get(triFingerSnipper_, out); }
  int GetWifiBiosRepairStatus(bool& out) const { return Get(wifiBiosRepair_, out); }
  int GetEnergyStarStatus(bool& out) const { return Get(energyStar_, out); }
  int GetEppSettingStatus(bool& out) const { return Get(eppSetting_, out); }
  int GetSQGDataStatus(bool& out) const { return Get(sqgData_, out); }
  int GetSupportTimeBackStatus(bool& out) const { return Get(timeBack_, out); }
  int GetSupportVrAssisantStatus(bool& out) const { return Get(vrAssisant_, out); }
  int GetSupportNpsPopStatus(bool& out) const { return Get(npsPop_, out); }
  int GetSupportLiveBroadcast(bool& out) const { return Get(liveBroadcast_, out); }
  int GetSupportOfficeCheck(bool& out) const { return Get(officeCheck_, out); }
  int GetSupportIntegratedGraphics(bool& out) const { return Get(integratedGraphics_, out); }
  // Always 0 with `out` true: no device name matches the power-manager exclusion list.
  int GetPowerSafeMgrStatus(bool& out) const;

 private:
  friend struct ::ProductFeatureInspector;  // the tests and utl load given files through it

  ProductFeature();
  ProductFeature(const ProductFeature&) = delete;
  ProductFeature& operator=(const ProductFeature&) = delete;

  int LoadConfig();                             // the file beside the host executable
  int LoadConfigFile(const std::string& path);  // "" means the path could not be formed
  void InitProductFeatureInfo(const ZnXmlElement& root, const std::string& feature,
                              const std::string& deviceKey);
  void SetValueByFeature(const std::string& feature, bool value);
  void ResetFeatureStatus();
  int Get(bool flag, bool& out) const {
    out = status == 0 && flag;
    return status;
  }

  int status = -2;
  bool fingerprint_ = false;
  bool btGpio_ = false;
  bool wifiGpio_ = false;
  bool cpuPower_ = false;
  bool triFingerSnipper_ = false;
  bool wifiBiosRepair_ = false;
  bool energyStar_ = false;
  bool eppSetting_ = false;
  bool sqgData_ = false;
  bool timeBack_ = false;
  bool vrAssisant_ = false;
  bool npsPop_ = false;
  bool liveBroadcast_ = false;
  bool officeCheck_ = false;
  bool integratedGraphics_ = true;
};

}  // namespace ProductAdapt
