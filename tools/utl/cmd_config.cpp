// utl config: the effective common configuration, the product feature table and URL look-ups,
// from the files the library would read or from files named on the command line.
#include <memory>
#include <string>
#include <vector>

#include "CommonCfgMgr.h"
#include "ProductFeature.h"
#include "UrlsManager.h"
#include "command.h"

// Loads named files through the readers' own code (they are friends of these structs).
struct CommonCfgMgrInspector {
  static CommonCfgMgr Load(const std::string& path) { return CommonCfgMgr(path, &CommonCfgMgr::SystemFact); }
  static std::vector<std::pair<const char*, const std::vector<std::string>*>> Lists(const CommonCfgMgr& cfg) {
    return {{"IdleExclude", &cfg.idleExclude_},       {"PackageExclude", &cfg.packageExclude_},
            {"PackageInclude", &cfg.packageInclude_}, {"PXSCoreVersion", &cfg.pxsCoreVersions_},
            {"C_version", &cfg.cVersions_},           {"OS", &cfg.operatingSystems_},
            {"DeviceName", &cfg.deviceNames_}};
  }
  // The machine values the support tests judge, as "fact.<list>" lines.
  static std::vector<std::pair<std::string, std::string>> Facts() {
    using Fact = CommonCfgMgr::Fact;
    return {{"C_version", CommonCfgMgr::SystemFact(Fact::ComponentVersion)},
            {"OS", CommonCfgMgr::SystemFact(Fact::OsVersion)},
            {"PXSCoreVersion", CommonCfgMgr::SystemFact(Fact::PxsCoreVersion)},
            {"DeviceType", CommonCfgMgr::SystemFact(Fact::DeviceType)}};
  }
};

struct ProductFeatureInspector {
  static std::unique_ptr<ProductAdapt::ProductFeature> Load(const std::string& path) {
    std::unique_ptr<ProductAdapt::ProductFeature> features(new ProductAdapt::ProductFeature());
    features->status = features->LoadConfigFile(path);
    return features;
  }
};

struct UrlsManagerInspector {
  static std::unique_ptr<qda::util::UrlsManager> Load(const std::string& shipped, const std::string& cache) {
    return std::unique_ptr<qda::util::UrlsManager>(new qda::util::UrlsManager(shipped, cache));
  }
};

namespace utl {
namespace {

void Show(const std::string& name, const std::string& value) { PrintLine(name + "=" + value); }
void Show(const std::string& name, int value) { Show(name, std::to_string(value)); }
void Show(const std::string& name, bool value) { Show(name, std::string(value ? "true" : "false")); }

int ShowCommon(const std::vector<std::string>& args) {
  if (args.size() > 1) return UsageError("config", "common takes at most one file");
  const CommonCfgMgr cfg = args.empty() ? *CommonCfgMgr::GetInstance() : CommonCfgMgrInspector::Load(args[0]);
  Show("ZOTAQuorixHostURL", cfg.GetQuorixHostURL());
  Show("ZOTAValidTestURL", cfg.GetQuorixZotaTestURL());
  Show("HotSpotValidTestURL", cfg.GetHotSpotTestURL());
  Show("HotSpotValidTestURLBackUp", cfg.GetHotSpotTestURLBackUp());
  Show("BatteryPrecent", cfg.GetBatteryPercent());
  Show("ZOTAQuorixCheckURL", cfg.GetZOTAQuorixCheckURL());
  Show("ZOTAQuorixReportURL", cfg.GetZOTAQuorixReportURL());
  Show("ZOTACheckURL", cfg.GetZOTACheckURL());
  Show("ZOTAReportURL", cfg.GetZOTAReportURL());
  Show("QueryNums", cfg.GetQueryNums());
  Show("QueryPeriod", cfg.GetQueryPeriod());
  Show("QueryQuorixPeriod", cfg.GetQueryQuorixPeriod());
  Show("QueryLocalPeriod", cfg.GetQueryLocalPeriod());
  Show("RetailQueryPeriod", cfg.GetQueryRetailPeriod());
  Show("InitTime", cfg.GetInitTime());
  Show("FilterSwitch", cfg.IsFilterSwitchOpen());
  Show("FilterDays", cfg.GetFilterDays());
  Show("FilterTimes", cfg.GetFilterTimes());
  Show("TestMode", cfg.GetTestMode());
  Show("AutoUpdate", cfg.IsEnableUpdate());
  Show("ForceUpdate", cfg.EnableForceUpdate());
  for (const auto& list : CommonCfgMgrInspector::Lists(cfg)) {
    std::string joined;
    for (const std::string& entry : *list.second) joined += (joined.empty() ? "" : ";") + entry;
    Show(list.first, joined);
  }
  for (const auto& fact : CommonCfgMgrInspector::Facts()) Show("fact." + fact.first, fact.second);
  return 0;
}

int ShowFeatures(const std::vector<std::string>& args) {
  if (args.size() > 1) return UsageError("config", "features takes at most one file");
  using ProductAdapt::ProductFeature;
  std::unique_ptr<ProductFeature> loaded;
  if (!args.empty()) loaded = ProductFeatureInspector::Load(args[0]);
  const ProductFeature& features = loaded ? *loaded : ProductFeature::GetInstance();
  using Getter = int (ProductFeature::*)(bool&) const;
  const std::pair<const char*, Getter> table[] = {
      {"fingerprint", &ProductFeature::GetFingerprintStatus},
      {"btgpio", &ProductFeature::GetBtGpioStatus},
      {"wifigpio", &ProductFeature::GetWifiGpioStatus},
      {"cpupower", &ProductFeature::GetCpuPowerStatus},
      {"trifingersnipper", &ProductFeature::GetTriFingerSnipperStatus},
      {"wifibiosrepair", &ProductFeature::GetWifiBiosRepairStatus},
      {"energystar", &ProductFeature::GetEnergyStarStatus},
      {"setepp", &ProductFeature::GetEppSettingStatus},
      {"sqgdata", &ProductFeature::GetSQGDataStatus},
      {"timeback", &ProductFeature::GetSupportTimeBackStatus},
      {"VrAssisant", &ProductFeature::GetSupportVrAssisantStatus},
      {"npspopwnd", &ProductFeature::GetSupportNpsPopStatus},
      {"livebroadcastmode", &ProductFeature::GetSupportLiveBroadcast},
      {"officeActiveStatusCheck", &ProductFeature::GetSupportOfficeCheck},
      {"integratedGraphics", &ProductFeature::GetSupportIntegratedGraphics}};
  bool out = false;
  Show("status", (features.*table[0].second)(out));
  for (const auto& row : table) {
    (features.*row.second)(out);
    Show(row.first, out);
  }
  features.GetPowerSafeMgrStatus(out);
  Show("powersafemgr", out);
  return 0;
}

int LookUpUrl(const std::vector<std::string>& args) {
  std::string shipped, cache;
  bool named = false;
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if ((args[i] == "--file" || args[i] == "--cache") && i + 1 < args.size()) {
      (args[i] == "--file" ? shipped : cache) = args[i + 1];
      named = true;
      ++i;
    } else {
      rest.push_back(args[i]);
    }
  }
  if (rest.empty() || rest.size() > 2) return UsageError("config", "url needs <name> [area]");
  std::unique_ptr<qda::util::UrlsManager> loaded;
  if (named) loaded = UrlsManagerInspector::Load(shipped, cache);
  const qda::util::UrlsManager& urls = loaded ? *loaded : qda::util::UrlsManager::Instance();
  const std::string url = rest.size() == 2 ? urls.GetUrl(rest[0], rest[1]) : urls.GetUrl(rest[0]);
  if (url.empty()) return Failure("no URL configured for '" + rest[0] + "'");
  PrintLine(url);
  return 0;
}

int RunConfig(const std::vector<std::string>& args) {
  if (args.empty()) return UsageError("config", "which table?");
  const std::vector<std::string> rest(args.begin() + 1, args.end());
  if (args[0] == "common") return ShowCommon(rest);
  if (args[0] == "features") return ShowFeatures(rest);
  if (args[0] == "url") return LookUpUrl(rest);
  return UsageError("config", "unknown table '" + args[0] + "'");
}

}  // namespace

UTL_COMMAND("config", "common [file] | features [file] | url [--file F] [--cache C] <name> [area]",
            "effective configuration: common settings, product features, URL table", RunConfig);

}  // namespace utl
