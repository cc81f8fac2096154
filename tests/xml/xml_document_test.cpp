// ZnXMLDocument: load, parse, save, declaration and print results, on good and damaged files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "ZnXml.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"

namespace {

// Writes `bytes` to `name` in `dir` and loads that file into `doc`.
int LoadBytes(ZnXMLDocument& doc, const test::TempDir& dir, const std::string& name,
              const std::string& bytes) {
  EXPECT_TRUE(test::WriteFileBytes(dir.File(name), bytes));
  return doc.LoadFile(dir.File(name).string());
}

TEST(XmlDocument, LoadFileResults) {
  test::TempDir dir;
  ZnXMLDocument doc;
  EXPECT_EQ(ZnXmlEmptyArgument, doc.LoadFile(""));
  EXPECT_EQ(3, doc.LoadFile(dir.File("missing.xml").string()));
  EXPECT_EQ(3, doc.LoadFile(dir.Path().string()));  // a folder does not open on either platform
  EXPECT_EQ(13, LoadBytes(doc, dir, "empty.xml", ""));
  ASSERT_EQ(ZnXmlSuccess, LoadBytes(doc, dir, "good.xml", "<cfg><a x=\"1\">one</a><b/></cfg>"));
  EXPECT_EQ("one", doc.RootElement().FirstNode("a").Value());

  // A truncated file fails and leaves no partial tree behind.
  const int cut = LoadBytes(doc, dir, "cut.xml", "<cfg><a>one</a><b>");
  EXPECT_TRUE(cut >= 6 && cut <= 14) << cut;
  EXPECT_TRUE(doc.RootElement().IsElementNull());
}

TEST(XmlDocument, HostileContent) {
  test::TempDir dir;
  ZnXMLDocument doc;
  // Far deeper than tinyxml2 allows: 18, not a stack overflow.
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<d>";
  EXPECT_EQ(18, doc.Parse(deep));
  EXPECT_TRUE(doc.RootElement().IsElementNull());

  const std::string big(8 * 1024 * 1024, 'x');
  ASSERT_EQ(ZnXmlSuccess, LoadBytes(doc, dir, "big.xml", "<r>" + big + "</r>"));
  EXPECT_EQ(big.size(), doc.RootElement().ValueSize());

  // Bytes are not converted; UTF-16 is not understood.
  ASSERT_EQ(ZnXmlSuccess, LoadBytes(doc, dir, "latin1.xml", "<r>caf\xE9</r>"));
  EXPECT_EQ("caf\xE9", doc.RootElement().Value());
  EXPECT_NE(ZnXmlSuccess, LoadBytes(doc, dir, "utf16.xml", std::string("\xFF\xFE<\0r\0/\0>\0", 10)));
  EXPECT_TRUE(doc.RootElement().IsElementNull());
  EXPECT_EQ(ZnXmlEmptyArgument, doc.Parse(""));
}

TEST(XmlDocument, SaveAndCreate) {
  test::TempDir dir;
  ZnXMLDocument doc;
  EXPECT_EQ(ZnXmlEmptyArgument, doc.SaveFile(dir.File("x.xml").string()));  // nothing to save
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<r><a>1</a></r>"));
  EXPECT_EQ(ZnXmlEmptyArgument, doc.SaveFile(""));
  EXPECT_EQ(ZnXmlSaveFailed, doc.SaveFile((dir.File("no-such-folder") / "x.xml").string()));

  // Indented output in text mode: CRLF line ends on Windows, LF on Linux.
  ASSERT_EQ(ZnXmlSuccess, doc.SaveFile(dir.File("out.xml").string()));
  const std::string eol = test::IsWindowsBuild() ? "\r\n" : "\n";
  EXPECT_EQ("<r>" + eol + "    <a>1</a>" + eol + "</r>" + eol, test::ReadFileBytes(dir.File("out.xml")));

  EXPECT_EQ(ZnXmlInsertFailed, doc.CreateNewXmlFile(dir.File("bad.xml").string(), "<r><a></r>"));
  EXPECT_FALSE(std::filesystem::exists(dir.File("bad.xml")));
  ASSERT_EQ(ZnXmlSuccess, doc.CreateNewXmlFile(dir.File("new.xml").string(), "<n v=\"2\"/>"));
  ASSERT_EQ(ZnXmlSuccess, doc.LoadFile(dir.File("new.xml").string()));
  EXPECT_EQ("2", doc.RootElement().Attribute("v"));
}

TEST(XmlDocument, InsertDeclarationAndPrint) {
  test::TempDir dir;
  ZnXMLDocument doc;
  EXPECT_EQ(ZnXmlInsertFailed, doc.InsertDeclaration(dir.File("missing.xml").string()));
  ASSERT_TRUE(test::WriteFileBytes(dir.File("full.xml"), "<r/>"));
  EXPECT_EQ(ZnXmlInsertFailed, doc.InsertDeclaration(dir.File("full.xml").string()));
  ASSERT_TRUE(test::WriteFileBytes(dir.File("empty.xml"), ""));
  ASSERT_EQ(ZnXmlSuccess, doc.InsertDeclaration(dir.File("empty.xml").string()));
  ZnXmlElement root = doc.NewElement("r");
  doc.InsertEndChild(&root);
  std::string printed;
  doc.Print(printed);
  EXPECT_EQ(std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r/>\n", 45), printed);

  // Nothing to print leaves the string alone; one empty element prints its text plus the printer's NUL.
  ZnXMLDocument single;
  std::string untouched = "keep";
  single.Print(untouched);
  EXPECT_EQ("keep", untouched);
  ASSERT_EQ(ZnXmlSuccess, single.Parse("<a/>"));
  single.Print(untouched);
  EXPECT_EQ(std::string("<a/>\n\0", 6), untouched);
  ZnXMLDocument fresh;
  fresh.InsertDeclaration();
  fresh.Print(printed);
  EXPECT_EQ(std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\0", 39), printed);
}

TEST(XmlDocument, NullDocumentAndFactories) {
  ZnXMLDocument doc;
  EXPECT_TRUE(doc.RootElement().IsElementNull());
  EXPECT_EQ(nullptr, doc.NewText("t"));  // NewText does not create the document
  doc.InsertEndChild(nullptr);
  EXPECT_TRUE(doc.IsDocumentNull());
  EXPECT_TRUE(doc.NewElement("").IsElementNull());
  EXPECT_FALSE(doc.IsDocumentNull());  // ...but NewElement does
  EXPECT_NE(nullptr, doc.NewText("t"));

  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<?xml version=\"1.0\"?><!-- c --><x/><y/><x id=\"2\"/>"));
  EXPECT_EQ("x", doc.RootElement().Name());
  EXPECT_EQ("2", doc.FirstNode("x").NextSiblingElement("x").Attribute("id"));
  EXPECT_TRUE(doc.FirstNode("X").IsElementNull());  // case-sensitive
}

}  // namespace
