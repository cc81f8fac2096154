// ProductAdapt::ProductFeature: status codes, the ";" key rule, support/unsupport and reloads.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ProductFeature.h"
#include "common/temp_dir.h"

struct ProductFeatureInspector {
  static std::unique_ptr<ProductAdapt::ProductFeature> Fresh() {
    return std::unique_ptr<ProductAdapt::ProductFeature>(new ProductAdapt::ProductFeature());
  }
  static int Load(ProductAdapt::ProductFeature& features, const std::string& path) {
    features.status = features.LoadConfigFile(path);
    return features.status;
  }
};

namespace {

using Peer = ProductFeatureInspector;
using ProductAdapt::ProductFeature;
using Getter = int (ProductFeature::*)(bool&) const;

// The fifteen getters in the order of their element names.
const Getter kGetters[] = {&ProductFeature::GetFingerprintStatus,
                           &ProductFeature::GetBtGpioStatus,
                           &ProductFeature::GetWifiGpioStatus,
                           &ProductFeature::GetCpuPowerStatus,
                           &ProductFeature::GetTriFingerSnipperStatus,
                           &ProductFeature::GetWifiBiosRepairStatus,
                           &ProductFeature::GetEnergyStarStatus,
                           &ProductFeature::GetEppSettingStatus,
                           &ProductFeature::GetSQGDataStatus,
                           &ProductFeature::GetSupportTimeBackStatus,
                           &ProductFeature::GetSupportVrAssisantStatus,
                           &ProductFeature::GetSupportNpsPopStatus,
                           &ProductFeature::GetSupportLiveBroadcast,
                           &ProductFeature::GetSupportOfficeCheck,
                           &ProductFeature::GetSupportIntegratedGraphics};
const char* const kNames[] = {"fingerprint",       "btgpio",
                              "wifigpio",          "cpupower",
                              "trifingersnipper",  "wifibiosrepair",
                              "energystar",        "setepp",
                              "sqgdata",           "timeback",
                              "VrAssisant",        "npspopwnd",
                              "livebroadcastmode", "officeActiveStatusCheck",
                              "integratedGraphics"};

// "1" or "0" per feature, and checks every getter returns `status`.
std::string Flags(const ProductFeature& features, int status) {
  std::string flags;
  for (Getter getter : kGetters) {
    bool out = true;
    EXPECT_EQ(status, (features.*getter)(out));
    flags += out ? '1' : '0';
  }
  return flags;
}

int LoadText(ProductFeature& features, const test::TempDir& dir, const std::string& xml) {
  EXPECT_TRUE(test::WriteFileBytes(dir.File("ProductFeature.xml"), xml));
  return Peer::Load(features, dir.File("ProductFeature.xml").string());
}

TEST(ProductFeature, StatusCodesOnBadFiles) {
  test::TempDir dir;
  auto features = Peer::Fresh();
  EXPECT_EQ(-3, Peer::Load(*features, ""));
  EXPECT_EQ("000000000000000", Flags(*features, -3));  // integratedGraphics too
  EXPECT_EQ(-4, Peer::Load(*features, dir.File("missing.xml").string()));
  EXPECT_EQ("000000000000000", Flags(*features, -4));
  EXPECT_EQ(-4, Peer::Load(*features, dir.Path().string()));
  EXPECT_EQ(-5, LoadText(*features, dir, ""));
  EXPECT_EQ(-5, LoadText(*features, dir, "<features><fingerprint><support>;"));
  EXPECT_EQ(-5, LoadText(*features, dir, std::string("\xFF\xFE<\0r\0/\0>\0", 10)));
  EXPECT_EQ("000000000000000", Flags(*features, -5));
  std::string deep;
  for (int i = 0; i < 3000; ++i) deep += "<x>";
  EXPECT_EQ(-5, LoadText(*features, dir, deep));

  // Only a comment: no root element, nothing decided, still a successful load.
  EXPECT_EQ(0, LoadText(*features, dir, "<!-- nothing -->"));
  EXPECT_EQ("000000000000001", Flags(*features, 0));

  bool out = false;
  EXPECT_EQ(0, features->GetPowerSafeMgrStatus(out));
  EXPECT_TRUE(out);
}

TEST(ProductFeature, SupportLists) {
  test::TempDir dir;
  auto features = Peer::Fresh();
  ASSERT_EQ(0, LoadText(*features, dir,
                        "<features>"
                        "<fingerprint><support>a;b;</support></fingerprint>"
                        "<btgpio><support>ab</support></btgpio>"
                        "<wifigpio><unsupport></unsupport></wifigpio>"
                        "<cpupower><unsupport>x;</unsupport></cpupower>"
                        "<trifingersnipper><unsupport>x;</unsupport><support>y;</support></trifingersnipper>"
                        "<wifibiosrepair/>"
                        "<EnergyStar><support>;</support></EnergyStar>"
                        "<setepp><support>\n  DEV;\n</support></setepp>"
                        "<VrAssisant><support>v;</support></VrAssisant>"
                        "<officeActiveStatusCheck><support>o;</support></officeActiveStatusCheck>"
                        "<integratedGraphics><support>none</support></integratedGraphics>"
                        "</features>"));
  // fingerprint 1, btgpio 0, wifigpio 1, cpupower 0, trifinger 1 (support wins), wifibiosrepair
  // 0, energystar 0 (case-sensitive name), setepp 1, VrAssisant 1, office 1, integrated 0.
  EXPECT_EQ("101010010010010", Flags(*features, 0));

  // A reload keeps flags the new file does not name; a failed one resets them all.
  ASSERT_EQ(0, LoadText(*features, dir, "<f><btgpio><support>k;</support></btgpio></f>"));
  EXPECT_EQ("111010010010010", Flags(*features, 0));
  ASSERT_EQ(-4, Peer::Load(*features, dir.File("gone.xml").string()));
  ASSERT_EQ(0, LoadText(*features, dir, "<f/>"));
  EXPECT_EQ("000000000000001", Flags(*features, 0));

  for (int i = 0; i < 15; ++i) {  // each element name reaches its own getter
    auto one = Peer::Fresh();
    ASSERT_EQ(0, LoadText(*one, dir,
                          std::string("<f><") + kNames[i] + "><support>;</support></" + kNames[i] + "></f>"));
    std::string expected(15, '0');
    expected[i] = '1';
    expected[14] = '1';
    EXPECT_EQ(expected, Flags(*one, 0)) << kNames[i];
  }
}

TEST(ProductFeature, InstanceAndReset) {
  const ProductFeature& instance = ProductFeature::GetInstance();
  EXPECT_EQ(&instance, &ProductFeature::GetInstance());
  // No configuration beside the test program: missing file.
  bool out = true;
  EXPECT_EQ(-4, instance.GetFingerprintStatus(out));
  EXPECT_FALSE(out);
  const_cast<ProductFeature&>(instance).Reset();
  EXPECT_EQ(-4, instance.GetSupportIntegratedGraphics(out));
  EXPECT_FALSE(out);
}

}  // namespace
