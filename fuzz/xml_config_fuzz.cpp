// libFuzzer target for the XML wrapper's load path and the configuration readers: the input is an XML
// file that ZnXMLDocument loads and walks and that CommonCfgMgr, ProductFeature and the URL table read.
// Nothing may crash, hang or leak; a document that loads must print, ending in the printer's NUL.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "CommonCfgMgr.h"
#include "ProductFeature.h"
#include "UrlsManager.h"
#include "ZnXml.h"

struct CommonCfgMgrInspector {
  static std::string Fact(CommonCfgMgr::Fact fact) {
    const char* const values[] = {"2.5.1", "10.0.0", "1.0", "DevA", "SN1"};  // in the enumeration's order
    return values[static_cast<int>(fact)];
  }
  static bool Run(const std::string& path) {
    CommonCfgMgr cfg(path, &Fact);
    return cfg.IsSupport("SomeDriverPackage") && cfg.IsSupportNimbra() && cfg.IsSupportIdleUpdate("x");
  }
};

struct ProductFeatureInspector {
  static int Run(const std::string& path) {
    ProductAdapt::ProductFeature features;
    features.status = features.LoadConfigFile(path);
    bool out = false;
    features.GetSupportIntegratedGraphics(out);
    return features.status;
  }
};

struct UrlsManagerInspector {
  static std::string Run(const std::string& path) {
    qda::util::UrlsManager urls(path, path);
    return urls.GetUrl("util") + urls.GetUrl("oobe_agreement_terms", "over_sea");
  }
};

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// Visits every element and attribute below `element` (bounded by tinyxml2's own depth limit).
std::size_t Walk(const ZnXmlElement& element) {
  std::size_t seen = element.NameSize() + element.ValueSize();
  for (ZnXmlAttribute a = element.FirstAttribute(""); !a.IsAttributeNull(); a = a.NextAttribute()) {
    seen += a.NameSize() + a.ValueSize();
  }
  for (ZnXmlElement e = element.FirstNode(""); !e.IsElementNull(); e = e.NextSiblingElement(""))
    seen += Walk(e);
  return seen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = "/tmp/xml_config_fuzz." + std::to_string(getpid()) + ".xml";
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  ZnXMLDocument doc;
  if (doc.LoadFile(path) == ZnXmlSuccess) {
    Walk(doc.RootElement());
    std::string printed;
    doc.Print(printed);
    Check(!printed.empty() && printed.back() == '\0');
    printed.pop_back();
    ZnXMLDocument again;  // tinyxml2 does not promise a round trip (top-level text), only no crash
    again.Parse(printed);
  }
  CommonCfgMgrInspector::Run(path);
  const int status = ProductFeatureInspector::Run(path);
  Check(status == 0 || status == -4 || status == -5);
  UrlsManagerInspector::Run(path);
  return 0;
}
