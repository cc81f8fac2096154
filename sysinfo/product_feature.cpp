// ProductAdapt::ProductFeature: feature switches from ProductFeature.xml beside the host executable.
#include "ProductFeature.h"

#include <cstddef>

#include "DEString.h"
#include "ZnXml.h"
#include "config/module_path.h"

namespace ProductAdapt {

namespace {

// Element names in the order the flags are decided.
constexpr const char* kFeatureNames[] = {"fingerprint",       "btgpio",
                                         "wifigpio",          "cpupower",
                                         "trifingersnipper",  "wifibiosrepair",
                                         "energystar",        "setepp",
                                         "sqgdata",           "timeback",
                                         "VrAssisant",        "npspopwnd",
                                         "livebroadcastmode", "officeActiveStatusCheck",
                                         "integratedGraphics"};

// Devices whose power manager stays off. The current device name is never one of them (device
// names are not known to this library), so the switch stays on.
constexpr const char* kPowerSafeExcluded[] = {"Atlas14", "Atlas16", "Boreal13", "Corvid15"};

constexpr int kLoaded = 0;
constexpr int kNoPath = -3;
constexpr int kNoFile = -4;
constexpr int kBadXml = -5;

}  // namespace

const ProductFeature& ProductFeature::GetInstance() {
  static ProductFeature instance;
  return instance;
}

ProductFeature::ProductFeature() { status = LoadConfig(); }

void ProductFeature::Reset() { status = LoadConfig(); }

int ProductFeature::LoadConfig() {
  const std::string path = DE::detail::JoinPath(DE::detail::HostExecutableFolder(),
                                                {"config", "product_adapter", "ProductFeature.xml"});
  return LoadConfigFile(path.size() < DE::detail::kMaxModulePath ? path : std::string());
}

int ProductFeature::LoadConfigFile(const std::string& path) {
  int result = kLoaded;
  ZnXMLDocument doc;
  if (path.empty()) {
    result = kNoPath;
  } else {
    const ZnXmlError loaded = doc.LoadFile(path);
    // The wrapper refuses folders and missing files alike with "not found".
    if (loaded == 3) {
      result = kNoFile;
    } else if (loaded != ZnXmlSuccess) {
      result = kBadXml;
    }
  }
  if (result == kLoaded) {
    // The device name is empty, so the key is ";" and a list counts when it holds a ";".
    const std::string deviceKey = DE::LowerCase(std::string() + ";");
    const ZnXmlElement root = doc.RootElement();
    if (!root.IsElementNull()) {
      for (const char* feature : kFeatureNames) InitProductFeatureInfo(root, feature, deviceKey);
    }
  }
  if (result != kLoaded) ResetFeatureStatus();
  return result;
}

void ProductFeature::InitProductFeatureInfo(const ZnXmlElement& root, const std::string& feature,
                                            const std::string& deviceKey) {
  const ZnXmlElement element = root.FirstNode(feature);
  if (element.IsElementNull()) return;
  const ZnXmlElement support = element.FirstNode("support");
  if (!support.IsElementNull()) {
    SetValueByFeature(feature, DE::LowerCase(support.Value()).find(deviceKey) != std::string::npos);
    return;
  }
  const ZnXmlElement unsupport = element.FirstNode("unsupport");
  if (!unsupport.IsElementNull()) {
    SetValueByFeature(feature, DE::LowerCase(unsupport.Value()).find(deviceKey) == std::string::npos);
  }
}

void ProductFeature::SetValueByFeature(const std::string& feature, bool value) {
  bool* const flags[] = {&fingerprint_,      &btGpio_,         &wifiGpio_,          &cpuPower_,
                         &triFingerSnipper_, &wifiBiosRepair_, &energyStar_,        &eppSetting_,
                         &sqgData_,          &timeBack_,       &vrAssisant_,        &npsPop_,
                         &liveBroadcast_,    &officeCheck_,    &integratedGraphics_};
  static_assert(sizeof(flags) / sizeof(flags[0]) == sizeof(kFeatureNames) / sizeof(kFeatureNames[0]),
                "one flag per feature name");
  for (std::size_t i = 0; i < sizeof(kFeatureNames) / sizeof(kFeatureNames[0]); ++i) {
    if (feature == kFeatureNames[i]) *flags[i] = value;
  }
}

void ProductFeature::ResetFeatureStatus() {
  for (const char* feature : kFeatureNames) SetValueByFeature(feature, false);
  integratedGraphics_ = true;
}

int ProductFeature::GetPowerSafeMgrStatus(bool& out) const {
  const std::string deviceName;  // not known to this library
  out = true;
  for (const char* excluded : kPowerSafeExcluded) {
    if (deviceName == excluded) out = false;
  }
  return 0;
}

}  // namespace ProductAdapt
