// ProductAdapt::ProductFeature: status codes, the ";" key rule, support/unsupport and reloads.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

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
using PF = ProductAdapt::ProductFeature;

// The element names and their getters, in flag order.
// clang-format off
const std::pair<const char*, int (PF::*)(bool&) const> kFeatures[] = {
    {"fingerprint", &PF::GetFingerprintStatus},        {"btgpio", &PF::GetBtGpioStatus},
    {"wifigpio", &PF::GetWifiGpioStatus},              {"cpupower", &PF::GetCpuPowerStatus},
    {"trifingersnipper", &PF::GetTriFingerSnipperStatus},
    {"wifibiosrepair", &PF::GetWifiBiosRepairStatus},  {"energystar", &PF::GetEnergyStarStatus},
    {"setepp", &PF::GetEppSettingStatus},              {"sqgdata", &PF::GetSQGDataStatus},
    {"timeback", &PF::GetSupportTimeBackStatus},       {"VrAssisant", &PF::GetSupportVrAssisantStatus},
    {"npspopwnd", &PF::GetSupportNpsPopStatus},        {"livebroadcastmode", &PF::GetSupportLiveBroadcast},
    {"officeActiveStatusCheck", &PF::GetSupportOfficeCheck},
    {"integratedGraphics", &PF::GetSupportIntegratedGraphics}};
// clang-format on

// "1" or "0" per feature, and checks every getter returns `status`.
std::string Flags(const PF& features, int status) {
  std::string flags;
  for (const auto& feature : kFeatures) {
    bool out = true;
    EXPECT_EQ(status, (features.*feature.second)(out));
    flags += out ? '1' : '0';
  }
  return flags;
}

int LoadText(PF& features, const test::TempDir& dir, const std::string& xml) {
  EXPECT_TRUE(test::WriteFileBytes(dir.File("ProductFeature.xml"), xml));
  return Peer::Load(features, dir.File("ProductFeature.xml").string());
}

TEST(ProductFeature, StatusCodesOnBadFiles) {
  test::TempDir dir;
  auto features = Peer::Fresh();
  const std::string none(15, '0');  // integratedGraphics too
  EXPECT_EQ(-3, Peer::Load(*features, ""));
  EXPECT_EQ(-4, Peer::Load(*features, dir.File("missing.xml").string()));
  EXPECT_EQ(-4, Peer::Load(*features, dir.Path().string()));
  EXPECT_EQ(none, Flags(*features, -4));
  // Damaged: the XML wrapper's own tests cover hostile files.
  EXPECT_EQ(-5, LoadText(*features, dir, "<features><fingerprint><support>;"));
  EXPECT_EQ(none, Flags(*features, -5));
  // Only a comment: no root element, nothing decided, still a successful load.
  EXPECT_EQ(0, LoadText(*features, dir, "<!-- nothing -->"));
  EXPECT_EQ("000000000000001", Flags(*features, 0));
  bool out = false;
  EXPECT_EQ(0, features->GetPowerSafeMgrStatus(out));
  EXPECT_TRUE(out);

  // The shared instance finds no configuration beside the test program, also after a reload.
  const_cast<PF&>(PF::GetInstance()).Reset();
  EXPECT_EQ(-4, PF::GetInstance().GetSupportIntegratedGraphics(out));
  EXPECT_FALSE(out);
}

TEST(ProductFeature, SupportLists) {
  test::TempDir dir;
  auto features = Peer::Fresh();
  const std::string xml =
      "<features><fingerprint><support>a;b;</support></fingerprint><btgpio><support>ab</support></btgpio>"
      "<wifigpio><unsupport></unsupport></wifigpio><cpupower><unsupport>x;</unsupport></cpupower>"
      "<trifingersnipper><unsupport>x;</unsupport><support>y;</support></trifingersnipper><wifibiosrepair/>"
      "<EnergyStar><support>;</support></EnergyStar><setepp><support>\n  DEV;\n</support></setepp>"
      "<VrAssisant><support>v;</support></VrAssisant><officeActiveStatusCheck><support>o;</support>"
      "</officeActiveStatusCheck><integratedGraphics><support>none</support></integratedGraphics></features>";
  ASSERT_EQ(0, LoadText(*features, dir, xml));
  // trifingersnipper: support wins; EnergyStar: names are case-sensitive.
  EXPECT_EQ("101010010010010", Flags(*features, 0));

  // A reload keeps flags the new file does not name; a failed one resets them all.
  ASSERT_EQ(0, LoadText(*features, dir, "<f><btgpio><support>k;</support></btgpio></f>"));
  EXPECT_EQ("111010010010010", Flags(*features, 0));
  ASSERT_EQ(-4, Peer::Load(*features, dir.File("gone.xml").string()));
  ASSERT_EQ(0, LoadText(*features, dir, "<f/>"));
  EXPECT_EQ("000000000000001", Flags(*features, 0));

  for (std::size_t i = 0; i < 15; ++i) {  // each element name reaches its own getter
    const std::string name = kFeatures[i].first;
    auto one = Peer::Fresh();
    ASSERT_EQ(0, LoadText(*one, dir, "<f><" + name + "><support>;</support></" + name + "></f>"));
    std::string expected(15, '0');
    expected[i] = expected[14] = '1';
    EXPECT_EQ(expected, Flags(*one, 0)) << name;
  }
}

}  // namespace
