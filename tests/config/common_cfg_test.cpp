// CommonCfgMgr: defaults, damaged files, every field, the device section and the support tests.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "CommonCfgMgr.h"
#include "common/temp_dir.h"

// Builds instances from test files, with machine facts the test chooses.
struct CommonCfgMgrInspector {
  static CommonCfgMgr::Facts facts;
  static int factsCalls;
  static CommonCfgMgr::Facts Fake() {
    ++factsCalls;
    return facts;
  }
  static CommonCfgMgr Load(const std::string& path) { return CommonCfgMgr(path, &Fake); }
  static bool Nimbra(CommonCfgMgr& cfg) { return cfg.IsSupportNimbra(); }
  static void SetFacts(const std::string& component, const std::string& os, const std::string& pxs,
                       const std::string& device) {
    facts = CommonCfgMgr::Facts{component, os, pxs, device, ""};
  }
};
CommonCfgMgr::Facts CommonCfgMgrInspector::facts;
int CommonCfgMgrInspector::factsCalls = 0;

namespace {

using Peer = CommonCfgMgrInspector;

CommonCfgMgr LoadText(const test::TempDir& dir, const std::string& xml) {
  const auto path = dir.File("commoncfg.xml");
  EXPECT_TRUE(test::WriteFileBytes(path, xml));
  return Peer::Load(path.string());
}

void ExpectDefaults(const CommonCfgMgr& cfg) {
  EXPECT_EQ("", cfg.GetQuorixHostURL());
  EXPECT_EQ("", cfg.GetHotSpotTestURLBackUp());
  EXPECT_EQ(30, cfg.GetBatteryPercent());
  EXPECT_EQ(0, cfg.GetQueryNums());
  EXPECT_EQ(0, cfg.GetTestMode());
  EXPECT_FALSE(cfg.IsFilterSwitchOpen());
  EXPECT_TRUE(cfg.IsEnableUpdate());
  EXPECT_TRUE(cfg.EnableForceUpdate());
}

TEST(CommonCfg, MissingOrDamagedFilesKeepDefaults) {
  Peer::SetFacts("", "", "", "");
  test::TempDir dir;
  ExpectDefaults(Peer::Load(""));
  ExpectDefaults(Peer::Load(dir.File("missing.xml").string()));
  ExpectDefaults(Peer::Load(dir.Path().string()));  // a folder in the file's place
  ExpectDefaults(LoadText(dir, ""));
  ExpectDefaults(LoadText(dir, "<cfg><BatteryPrecent>55</BatteryPrecent><update><default>"));  // truncated
  ExpectDefaults(LoadText(dir, std::string("\xFF\xFE<\0c\0/\0>\0", 10)));                      // UTF-16
  std::string deep = "<cfg><BatteryPrecent>55</BatteryPrecent>";
  for (int i = 0; i < 5000; ++i) deep += "<n>";
  ExpectDefaults(LoadText(dir, deep));
  ExpectDefaults(LoadText(dir, "<?xml version=\"1.0\"?><!-- only a comment -->"));
}

TEST(CommonCfg, ReadsEveryField) {
  Peer::SetFacts("", "", "", "");
  test::TempDir dir;
  const CommonCfgMgr cfg = LoadText(dir,
                                    "<anyroot>"
                                    "<ZOTAQuorixHostURL>https://q.example/</ZOTAQuorixHostURL>"
                                    "<ZOTAValidTestURL>zt</ZOTAValidTestURL>"
                                    "<HotSpotValidTestURL>h1</HotSpotValidTestURL>"
                                    "<HotSpotValidTestURLBackUp>h2</HotSpotValidTestURLBackUp>"
                                    "<BatteryPercent>99</BatteryPercent>"  // not the file's spelling
                                    "<BatteryPrecent>45</BatteryPrecent>"
                                    "<ZOTAQuorixCheckURL>qc</ZOTAQuorixCheckURL>"
                                    "<ZOTAQuorixReportURL>qr</ZOTAQuorixReportURL>"
                                    "<ZOTACheckURL>c</ZOTACheckURL><ZOTAReportURL>r</ZOTAReportURL>"
                                    "<QueryNums>12abc</QueryNums><QueryPeriod>abc</QueryPeriod>"
                                    "<QueryQuorixPeriod>77</QueryQuorixPeriod>"
                                    "<QueryLocalPeriod> -7</QueryLocalPeriod>"
                                    "<RetailQueryPeriod>99999999999</RetailQueryPeriod>"
                                    "<InitTime>+8</InitTime><FilterSwitch>2</FilterSwitch>"
                                    "<FilterDays>3</FilterDays><FilterTimes>4</FilterTimes>"
                                    "<TestMode>5</TestMode><Unknown>x</Unknown>"
                                    "</anyroot>");
  EXPECT_EQ("https://q.example/", cfg.GetQuorixHostURL());
  EXPECT_EQ("zt", cfg.GetQuorixZotaTestURL());
  EXPECT_EQ("h1", cfg.GetHotSpotTestURL());
  EXPECT_EQ("h2", cfg.GetHotSpotTestURLBackUp());
  EXPECT_EQ(45, cfg.GetBatteryPercent());
  EXPECT_EQ("qc", cfg.GetZOTAQuorixCheckURL());
  EXPECT_EQ("qr", cfg.GetZOTAQuorixReportURL());
  EXPECT_EQ("c", cfg.GetZOTACheckURL());
  EXPECT_EQ("r", cfg.GetZOTAReportURL());
  EXPECT_EQ(12, cfg.GetQueryNums());
  EXPECT_EQ(0, cfg.GetQueryPeriod());
  EXPECT_EQ(0, cfg.GetQueryQuorixPeriod());  // never read from the file
  EXPECT_EQ(-7, cfg.GetQueryLocalPeriod());
  EXPECT_EQ(INT_MAX, cfg.GetQueryRetailPeriod());
  EXPECT_EQ(8, cfg.GetInitTime());
  EXPECT_TRUE(cfg.IsFilterSwitchOpen());
  EXPECT_EQ(3, cfg.GetFilterDays());
  EXPECT_EQ(4, cfg.GetFilterTimes());
  EXPECT_EQ(5, cfg.GetTestMode());
  EXPECT_TRUE(cfg.IsEnableUpdate());  // no "update" element: untouched
  EXPECT_TRUE(cfg.EnableForceUpdate());

  // Empty texts keep the defaults; "0" switches the filter off.
  const CommonCfgMgr empty =
      LoadText(dir, "<c><BatteryPrecent></BatteryPrecent><FilterSwitch>0</FilterSwitch></c>");
  EXPECT_EQ(30, empty.GetBatteryPercent());
  EXPECT_FALSE(empty.IsFilterSwitchOpen());
}

TEST(CommonCfg, DeviceSectionAndSwitches) {
  test::TempDir dir;
  const std::string xml =
      "<c><update>"
      "<DevA><AutoUpdate>true</AutoUpdate><ForceUpdate>1</ForceUpdate><IdleExclude>a</IdleExclude></DevA>"
      "<default><AutoUpdate>TRUE</AutoUpdate><ForceUpdate>yes</ForceUpdate><IdleExclude>d</IdleExclude></"
      "default>"
      "<DevC><IdleExclude>c</IdleExclude></DevC>"
      "</update></c>";
  Peer::SetFacts("", "", "", "DevA");
  CommonCfgMgr own = LoadText(dir, xml);
  EXPECT_TRUE(own.IsEnableUpdate());
  EXPECT_TRUE(own.EnableForceUpdate());
  EXPECT_FALSE(own.IsSupportIdleUpdate("a"));
  EXPECT_TRUE(own.IsSupportIdleUpdate("d"));

  for (const char* device : {"DevB", "", "deva"}) {  // no own section (names are case-sensitive)
    Peer::SetFacts("", "", "", device);
    CommonCfgMgr fallback = LoadText(dir, xml);
    EXPECT_FALSE(fallback.IsEnableUpdate()) << device;  // "TRUE" is not accepted
    EXPECT_FALSE(fallback.EnableForceUpdate()) << device;
    EXPECT_FALSE(fallback.IsSupportIdleUpdate("d")) << device;
    EXPECT_TRUE(fallback.IsSupportIdleUpdate("a")) << device;
  }

  Peer::SetFacts("", "", "", "DevC");  // own section without the switches: both off
  const CommonCfgMgr bare = LoadText(dir, xml);
  EXPECT_FALSE(bare.IsEnableUpdate());
  EXPECT_FALSE(bare.EnableForceUpdate());

  Peer::SetFacts("", "", "", "DevX");  // an update element with no usable section: both off
  const CommonCfgMgr none = LoadText(dir, "<c><update><DevA/></update></c>");
  EXPECT_FALSE(none.IsEnableUpdate());
  EXPECT_FALSE(none.EnableForceUpdate());
}

TEST(CommonCfg, SupportTestsAndPatterns) {
  test::TempDir dir;
  const std::string xml =
      "<c><update><default>"
      "<IdleExclude>Scan;Backup Tool</IdleExclude>"
      "<PackageExclude>^Beta;(</PackageExclude>"
      "<PackageInclude>Driver;^Tool$</PackageInclude>"
      "<C_version>^2\\.;^3\\.1</C_version>"
      "<OS>^10\\.0</OS>"
      "<DeviceName>Book</DeviceName>"
      "<PXSCoreVersion>^9</PXSCoreVersion>"
      "</default></update></c>";
  Peer::SetFacts("2.5.1", "10.0.0", "1.0", "ZenBook14");
  CommonCfgMgr cfg = LoadText(dir, xml);
  EXPECT_TRUE(cfg.IsSupportIdleUpdate("Backup"));
  EXPECT_FALSE(cfg.IsSupportIdleUpdate("Backup Tool"));
  EXPECT_TRUE(cfg.IsSupportIdleUpdate("scan"));

  EXPECT_TRUE(cfg.IsSupport("IntelDriverPack"));  // found inside a longer name
  EXPECT_TRUE(cfg.IsSupport("Tool"));
  EXPECT_FALSE(cfg.IsSupport("Toolkit"));
  EXPECT_FALSE(cfg.IsSupport("BetaDriver"));  // excluded; the broken "(" entry matches nothing
  EXPECT_FALSE(cfg.IsSupport(""));
  EXPECT_FALSE(cfg.IsSupport("Firmware"));
  EXPECT_FALSE(Peer::Nimbra(cfg));  // judged separately, not part of IsSupport

  Peer::SetFacts("1.9", "10.0.0", "9.1", "ZenBook14");
  CommonCfgMgr oldComponent = LoadText(dir, xml);
  EXPECT_FALSE(oldComponent.IsSupport("Driver"));
  EXPECT_TRUE(Peer::Nimbra(oldComponent));
  Peer::SetFacts("3.1.0", "6.1.0", "", "ZenBook14");
  EXPECT_FALSE(LoadText(dir, xml).IsSupport("Driver"));  // OS
  Peer::SetFacts("3.1.0", "10.0.0", "", "Vivo");
  EXPECT_FALSE(LoadText(dir, xml).IsSupport("Driver"));  // device

  // Empty lists accept everything, unknown facts included; the component version is asked twice.
  CommonCfgMgr open = LoadText(dir, "<c><update><default/></update></c>");
  Peer::factsCalls = 0;
  EXPECT_TRUE(open.IsSupport("anything"));
  EXPECT_EQ(5, Peer::factsCalls);  // version, version, OS, device, serial number
  EXPECT_TRUE(open.IsSupportIdleUpdate("anything"));
}

TEST(CommonCfg, SingletonIsOneObject) {
  CommonCfgMgr* first = CommonCfgMgr::GetInstance();
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, CommonCfgMgr::GetInstance());
  EXPECT_GE(first->GetBatteryPercent(), 0);
}

}  // namespace
