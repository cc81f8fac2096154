// qda::util::UrlsManager: layout, areas, which file wins, and damaged files.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "UrlsManager.h"
#include "common/temp_dir.h"

struct UrlsManagerInspector {
  static std::unique_ptr<qda::util::UrlsManager> Load(const std::string& shipped, const std::string& cache) {
    return std::unique_ptr<qda::util::UrlsManager>(new qda::util::UrlsManager(shipped, cache));
  }
};

namespace {

const char kShipped[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<urls>\n"
    "  <url name=\"util\">\n    https://www.example.com/\n  </url>\n"
    "  <url name=\"oobe_agreement_terms\">https://global.example.com/</url>\n"
    "  <url name=\"oobe_agreement_terms\" area=\"over_sea\">https://os.example.com/</url>\n"
    "  <url name=\"shipped_only\"><![CDATA[https://s.example.com/?a=1&b=2]]></url>\n"
    "  <url name=\"util\">https://second.example.com/</url>\n"
    "  <url>https://no-name.example.com/</url>\n"
    "  <url name=\"empty\"></url>\n"
    "  <link name=\"other\">https://ignored.example.com/</link>\n"
    "</urls>\n";

TEST(UrlsManager, ShippedTableAndAreas) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shipped.xml"), kShipped));
  auto urls = UrlsManagerInspector::Load(dir.File("shipped.xml").string(), dir.File("none.xml").string());
  EXPECT_EQ("https://www.example.com/", urls->GetUrl("util"));  // trimmed; the first entry counts
  EXPECT_EQ("https://os.example.com/", urls->GetUrl("oobe_agreement_terms", "over_sea"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms", "cn"));  // no such area
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms", ""));
  EXPECT_EQ("https://www.example.com/", urls->GetUrl("util", "over_sea"));
  EXPECT_EQ("https://s.example.com/?a=1&b=2", urls->GetUrl("shipped_only"));
  EXPECT_EQ("", urls->GetUrl("empty"));
  EXPECT_EQ("", urls->GetUrl("other"));
  EXPECT_EQ("", urls->GetUrl("UTIL"));  // names are case-sensitive
  EXPECT_EQ("", urls->GetUrl(""));
}

TEST(UrlsManager, CachedCopyWinsPerEntry) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shipped.xml"), kShipped));
  ASSERT_TRUE(
      test::WriteFileBytes(dir.File("cache.xml"),
                           "<u><url name=\"oobe_agreement_terms\" area=\"over_sea\">https://new.example.com/"
                           "</url><url name=\"cache_only\">https://c.example.com/</url>"
                           "<url name=\"util\"> </url></u>"));
  auto urls = UrlsManagerInspector::Load(dir.File("shipped.xml").string(), dir.File("cache.xml").string());
  EXPECT_EQ("https://new.example.com/", urls->GetUrl("oobe_agreement_terms", "over_sea"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms"));
  EXPECT_EQ("https://c.example.com/", urls->GetUrl("cache_only"));
  EXPECT_EQ("https://www.example.com/", urls->GetUrl("util"));  // a blank cached entry does not erase

  // Only the cache, or only damaged files.
  auto cacheOnly = UrlsManagerInspector::Load("", dir.File("cache.xml").string());
  EXPECT_EQ("https://c.example.com/", cacheOnly->GetUrl("cache_only"));
  EXPECT_EQ("", cacheOnly->GetUrl("shipped_only"));
}

TEST(UrlsManager, DamagedFilesContributeNothing) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shipped.xml"), kShipped));
  std::string deep = "<urls><url name=\"deep\">https://d.example.com/</url>";
  for (int i = 0; i < 5000; ++i) deep += "<x>";
  const std::string damaged[] = {"", "<urls><url name=\"util\">https://bad.example.com/</url><url",
                                 std::string("\xFF\xFE<\0u\0/\0>\0", 10), deep};
  for (const std::string& bytes : damaged) {
    ASSERT_TRUE(test::WriteFileBytes(dir.File("cache.xml"), bytes));
    auto urls = UrlsManagerInspector::Load(dir.File("shipped.xml").string(), dir.File("cache.xml").string());
    EXPECT_EQ("https://www.example.com/", urls->GetUrl("util"));
    EXPECT_EQ("", urls->GetUrl("deep"));
  }
  auto folder = UrlsManagerInspector::Load(dir.Path().string(), dir.Path().string());
  EXPECT_EQ("", folder->GetUrl("util"));

  // A very long URL survives whole.
  const std::string longUrl = "https://l.example.com/" + std::string(1 << 20, 'a');
  ASSERT_TRUE(test::WriteFileBytes(dir.File("long.xml"), "<u><url name=\"l\">" + longUrl + "</url></u>"));
  EXPECT_EQ(longUrl, UrlsManagerInspector::Load(dir.File("long.xml").string(), "")->GetUrl("l"));

  EXPECT_EQ(&qda::util::UrlsManager::Instance(), &qda::util::UrlsManager::Instance());
}

}  // namespace
