// qda::util::UrlsManager: layout, areas, which file wins, and damaged files.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "UrlsManager.h"
#include "common/temp_dir.h"

// Loads shipped.xml and cache.xml of `dir` ("" for a name: no file).
struct UrlsManagerInspector {
  static std::unique_ptr<qda::util::UrlsManager> Load(const test::TempDir& dir, const char* shipped,
                                                      const char* cache) {
    return std::unique_ptr<qda::util::UrlsManager>(new qda::util::UrlsManager(
        *shipped ? dir.File(shipped).string() : "", *cache ? dir.File(cache).string() : ""));
  }
};

namespace {

// Blanks around a URL, CDATA, repeated names, entries without name or text, other elements.
const char kShipped[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<urls>\n"
    "  <url name=\"util\">\n    https://www.example.com/\n  </url>\n"
    "<url name=\"oobe_agreement_terms\">https://global.example.com/</url>"
    "<url name=\"oobe_agreement_terms\" area=\"over_sea\">https://os.example.com/</url>"
    "<url name=\"shipped_only\"><![CDATA[https://s.example.com/?a=1&b=2]]></url>"
    "<url name=\"util\">https://second.example.com/</url><url>https://no-name.example.com/</url>"
    "<url name=\"empty\"></url><link name=\"other\">https://ignored.example.com/</link></urls>\n";

TEST(UrlsManager, AreasWhichFileWinsAndDamagedFiles) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shipped.xml"), kShipped));
  auto urls = UrlsManagerInspector::Load(dir, "shipped.xml", "none.xml");
  EXPECT_EQ("https://www.example.com/", urls->GetUrl("util"));  // trimmed; the first entry counts
  EXPECT_EQ("https://os.example.com/", urls->GetUrl("oobe_agreement_terms", "over_sea"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms", "cn"));  // no such area
  EXPECT_EQ("https://s.example.com/?a=1&b=2", urls->GetUrl("shipped_only"));
  EXPECT_EQ("", urls->GetUrl("other"));
  EXPECT_EQ("", urls->GetUrl("UTIL"));  // names are case-sensitive

  // The cached copy wins per entry; a blank cached entry does not erase the shipped one.
  ASSERT_TRUE(test::WriteFileBytes(
      dir.File("cache.xml"),
      "<u><url name=\"oobe_agreement_terms\" area=\"over_sea\">https://new.example.com/</url>"
      "<url name=\"cache_only\">https://c.example.com/</url><url name=\"util\"> </url></u>"));
  urls = UrlsManagerInspector::Load(dir, "shipped.xml", "cache.xml");
  EXPECT_EQ("https://new.example.com/", urls->GetUrl("oobe_agreement_terms", "over_sea"));
  EXPECT_EQ("https://global.example.com/", urls->GetUrl("oobe_agreement_terms"));
  EXPECT_EQ("https://c.example.com/", urls->GetUrl("cache_only"));
  EXPECT_EQ("https://www.example.com/", urls->GetUrl("util"));

  // A damaged cache contributes nothing (the XML wrapper's own tests cover hostile files).
  ASSERT_TRUE(test::WriteFileBytes(dir.File("cache.xml"),
                                   "<urls><url name=\"util\">https://bad.example.com/</url><url"));
  EXPECT_EQ("https://www.example.com/",
            UrlsManagerInspector::Load(dir, "shipped.xml", "cache.xml")->GetUrl("util"));
}

}  // namespace
