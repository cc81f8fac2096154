// CommonCfgMgr: defaults, damaged files, every field, the device section and the support tests.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "CommonCfgMgr.h"
#include "common/temp_dir.h"

// Builds instances from test files, with machine facts the test chooses.
struct CommonCfgMgrInspector {
  static std::vector<std::string> facts;  // in the order of CommonCfgMgr::Fact
  static int factsCalls;
  static std::string Fake(CommonCfgMgr::Fact fact) {
    ++factsCalls;
    return facts.at(static_cast<std::size_t>(fact));
  }
  static CommonCfgMgr Load(const std::string& path, const std::string& device, const std::string& component,
                           const std::string& os, const std::string& pxs) {
    facts = {component, os, pxs, device, ""};
    return CommonCfgMgr(path, &Fake);
  }
  static bool Nimbra(CommonCfgMgr& cfg) { return cfg.IsSupportNimbra(); }
};
std::vector<std::string> CommonCfgMgrInspector::facts;
int CommonCfgMgrInspector::factsCalls = 0;

namespace {

using Peer = CommonCfgMgrInspector;

CommonCfgMgr LoadText(const test::TempDir& dir, const std::string& xml, const std::string& device = "",
                      const std::string& component = "", const std::string& os = "",
                      const std::string& pxs = "") {
  EXPECT_TRUE(test::WriteFileBytes(dir.File("commoncfg.xml"), xml));
  return Peer::Load(dir.File("commoncfg.xml").string(), device, component, os, pxs);
}

// The host URL and battery percent, then "1"/"0" for the filter, update and force-update switches
// and for idle updates of "a" and "d".
std::string State(CommonCfgMgr cfg) {
  std::string out = cfg.GetQuorixHostURL() + std::to_string(cfg.GetBatteryPercent()) + " ";
  for (bool on : {cfg.IsFilterSwitchOpen(), cfg.IsEnableUpdate(), cfg.EnableForceUpdate(),
                  cfg.IsSupportIdleUpdate("a"), cfg.IsSupportIdleUpdate("d")}) {
    out += on ? '1' : '0';
  }
  return out;
}

TEST(CommonCfg, MissingOrDamagedFilesKeepDefaults) {
  test::TempDir dir;
  for (const std::string& path : {std::string(), dir.File("missing.xml").string(), dir.Path().string()}) {
    EXPECT_EQ("30 01111", State(Peer::Load(path, "", "", "", ""))) << path;
  }
  // Damaged (the XML wrapper's own tests cover hostile files), or without a root element.
  for (const std::string& text : {std::string("<cfg><BatteryPrecent>55</BatteryPrecent><update><default>"),
                                  std::string("<?xml version=\"1.0\"?><!-- only a comment -->")}) {
    EXPECT_EQ("30 01111", State(LoadText(dir, text)));
  }
  EXPECT_EQ("30 01111", State(*CommonCfgMgr::GetInstance()));  // no configuration beside the library
}

TEST(CommonCfg, ReadsEveryField) {
  test::TempDir dir;
  const std::string xml =
      "<anyroot><ZOTAQuorixHostURL>https://q.example/</ZOTAQuorixHostURL>"
      "<ZOTAValidTestURL>zt</ZOTAValidTestURL><HotSpotValidTestURL>h1</HotSpotValidTestURL>"
      "<HotSpotValidTestURLBackUp>h2</HotSpotValidTestURLBackUp><BatteryPercent>99</BatteryPercent>"
      "<BatteryPrecent>45</BatteryPrecent>"  // the file's own spelling
      "<ZOTAQuorixCheckURL>qc</ZOTAQuorixCheckURL><ZOTAQuorixReportURL>qr</ZOTAQuorixReportURL>"
      "<ZOTACheckURL>c</ZOTACheckURL><ZOTAReportURL>r</ZOTAReportURL>"
      "<QueryNums>12abc</QueryNums><QueryPeriod>abc</QueryPeriod><QueryQuorixPeriod>77</QueryQuorixPeriod>"
      "<QueryLocalPeriod> -7</QueryLocalPeriod><RetailQueryPeriod>99999999999</RetailQueryPeriod>"
      "<InitTime>+8</InitTime><FilterSwitch>2</FilterSwitch><FilterDays>3</FilterDays>"
      "<FilterTimes>4</FilterTimes><TestMode>5</TestMode><Unknown>x</Unknown></anyroot>";
  const CommonCfgMgr cfg = LoadText(dir, xml);
  EXPECT_EQ("https://q.example/ zt h1 h2 qc qr c r",
            cfg.GetQuorixHostURL() + " " + cfg.GetQuorixZotaTestURL() + " " + cfg.GetHotSpotTestURL() + " " +
                cfg.GetHotSpotTestURLBackUp() + " " + cfg.GetZOTAQuorixCheckURL() + " " +
                cfg.GetZOTAQuorixReportURL() + " " + cfg.GetZOTACheckURL() + " " + cfg.GetZOTAReportURL());
  // QueryQuorixPeriod is never read from the file.
  EXPECT_EQ(
      (std::vector<int>{45, 12, 0, 0, -7, INT_MAX, 8, 3, 4, 5}),
      (std::vector<int>{cfg.GetBatteryPercent(), cfg.GetQueryNums(), cfg.GetQueryPeriod(),
                        cfg.GetQueryQuorixPeriod(), cfg.GetQueryLocalPeriod(), cfg.GetQueryRetailPeriod(),
                        cfg.GetInitTime(), cfg.GetFilterDays(), cfg.GetFilterTimes(), cfg.GetTestMode()}));
  EXPECT_EQ("https://q.example/45 11111", State(cfg));  // no "update" element: switches untouched
  // Empty texts keep the defaults; "0" switches the filter off.
  EXPECT_EQ("30 01111",
            State(LoadText(dir, "<c><BatteryPrecent></BatteryPrecent><FilterSwitch>0</FilterSwitch></c>")));
}

TEST(CommonCfg, DeviceSectionAndSwitches) {
  test::TempDir dir;
  const std::string xml =
      "<c><update><DevA><AutoUpdate>true</AutoUpdate><ForceUpdate>1</ForceUpdate><IdleExclude>a</IdleExclude>"
      "</DevA><default><AutoUpdate>TRUE</AutoUpdate><ForceUpdate>yes</ForceUpdate>"
      "<IdleExclude>d</IdleExclude></default><DevC><IdleExclude>c</IdleExclude></DevC></update></c>";
  EXPECT_EQ("30 01101", State(LoadText(dir, xml, "DevA")));
  // No own section (names are case-sensitive): the default one, where "TRUE" is not accepted.
  for (const char* device : {"DevB", "", "deva"}) EXPECT_EQ("30 00010", State(LoadText(dir, xml, device)));
  EXPECT_EQ("30 00011", State(LoadText(dir, xml, "DevC")));  // own section without switches
  EXPECT_EQ("30 00011", State(LoadText(dir, "<c><update><DevA/></update></c>", "DevX")));  // no section
}

TEST(CommonCfg, SupportTestsAndPatterns) {
  test::TempDir dir;
  const std::string xml =
      "<c><update><default><IdleExclude>Scan;Backup Tool</IdleExclude>"
      "<PackageExclude>^Beta;(</PackageExclude>"
      "<PackageInclude>Driver;^Tool$</PackageInclude><C_version>^2\\.;^3\\.1</C_version><OS>^10\\.0</OS>"
      "<DeviceName>Book</DeviceName><PXSCoreVersion>^9</PXSCoreVersion></default></update></c>";
  CommonCfgMgr cfg = LoadText(dir, xml, "ZenBook14", "2.5.1", "10.0.0");
  EXPECT_TRUE(cfg.IsSupportIdleUpdate("Backup"));
  EXPECT_FALSE(cfg.IsSupportIdleUpdate("Backup Tool"));
  EXPECT_TRUE(cfg.IsSupportIdleUpdate("scan"));
  EXPECT_TRUE(cfg.IsSupport("IntelDriverPack"));  // found inside a longer name
  EXPECT_FALSE(cfg.IsSupport("Toolkit"));
  EXPECT_FALSE(cfg.IsSupport("BetaDriver"));  // excluded; the broken "(" entry matches nothing
  EXPECT_FALSE(cfg.IsSupport(""));
  EXPECT_FALSE(Peer::Nimbra(cfg));  // the PXS core version is judged apart from IsSupport

  CommonCfgMgr oldComponent = LoadText(dir, xml, "ZenBook14", "1.9", "10.0.0", "9.1");
  EXPECT_FALSE(oldComponent.IsSupport("Driver"));
  EXPECT_TRUE(Peer::Nimbra(oldComponent));
  EXPECT_FALSE(LoadText(dir, xml, "ZenBook14", "3.1.0", "6.1.0").IsSupport("Driver"));  // OS
  EXPECT_FALSE(LoadText(dir, xml, "Vivo", "3.1.0", "10.0.0").IsSupport("Driver"));      // device

  // Empty lists accept everything, unknown facts included; the component version is asked twice.
  CommonCfgMgr open = LoadText(dir, "<c><update><default/></update></c>");
  Peer::factsCalls = 0;
  EXPECT_TRUE(open.IsSupport("anything"));
  EXPECT_EQ(5, Peer::factsCalls);  // version, version, OS, device, serial number
  EXPECT_TRUE(open.IsSupportIdleUpdate("anything"));
}

}  // namespace
