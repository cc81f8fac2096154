// ZnXMLDocument: load, parse, save, declaration and print results, on good and damaged files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "ZnXml.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"

namespace {

std::string PathOf(const std::filesystem::path& path) { return path.string(); }

TEST(XmlDocument, LoadFileResults) {
  test::TempDir dir;
  ZnXMLDocument doc;
  EXPECT_EQ(ZnXmlEmptyArgument, doc.LoadFile(""));
  EXPECT_EQ(3, doc.LoadFile(PathOf(dir.File("missing.xml"))));
  EXPECT_EQ(3, doc.LoadFile(PathOf(dir.Path())));  // a folder does not open on either platform

  ASSERT_TRUE(test::WriteFileBytes(dir.File("empty.xml"), ""));
  EXPECT_EQ(13, doc.LoadFile(PathOf(dir.File("empty.xml"))));

  ASSERT_TRUE(test::WriteFileBytes(dir.File("good.xml"), "<cfg><a x=\"1\">one</a><b/></cfg>"));
  ASSERT_EQ(ZnXmlSuccess, doc.LoadFile(PathOf(dir.File("good.xml"))));
  EXPECT_EQ("cfg", doc.RootElement().Name());
  EXPECT_EQ("one", doc.RootElement().FirstNode("a").Value());

  // A truncated file fails and leaves no partial tree behind.
  ASSERT_TRUE(test::WriteFileBytes(dir.File("cut.xml"), "<cfg><a>one</a><b>"));
  const int cut = doc.LoadFile(PathOf(dir.File("cut.xml")));
  EXPECT_GE(cut, 6);
  EXPECT_LE(cut, 14);
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

  // A large text survives byte for byte.
  const std::string big(8 * 1024 * 1024, 'x');
  ASSERT_TRUE(test::WriteFileBytes(dir.File("big.xml"), "<r>" + big + "</r>"));
  ASSERT_EQ(ZnXmlSuccess, doc.LoadFile(PathOf(dir.File("big.xml"))));
  EXPECT_EQ(big.size(), doc.RootElement().ValueSize());

  // Bytes are not converted: Latin-1 text comes back as the same bytes.
  ASSERT_TRUE(test::WriteFileBytes(dir.File("latin1.xml"), "<r>caf\xE9</r>"));
  ASSERT_EQ(ZnXmlSuccess, doc.LoadFile(PathOf(dir.File("latin1.xml"))));
  EXPECT_EQ("caf\xE9", doc.RootElement().Value());

  // A UTF-8 byte-order mark is skipped; UTF-16 is not understood and gives no tree.
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("\xEF\xBB\xBF<r>t</r>"));
  EXPECT_EQ("t", doc.RootElement().Value());
  const std::string utf16("\xFF\xFE<\0r\0/\0>\0", 10);
  ASSERT_TRUE(test::WriteFileBytes(dir.File("utf16.xml"), utf16));
  EXPECT_NE(ZnXmlSuccess, doc.LoadFile(PathOf(dir.File("utf16.xml"))));
  EXPECT_TRUE(doc.RootElement().IsElementNull());

  EXPECT_EQ(ZnXmlEmptyArgument, doc.Parse(""));
}

TEST(XmlDocument, SaveAndCreate) {
  test::TempDir dir;
  ZnXMLDocument none;
  EXPECT_EQ(ZnXmlEmptyArgument, none.SaveFile(PathOf(dir.File("x.xml"))));

  ZnXMLDocument doc;
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<r><a>1</a></r>"));
  EXPECT_EQ(ZnXmlEmptyArgument, doc.SaveFile(""));
  EXPECT_EQ(ZnXmlSaveFailed, doc.SaveFile(PathOf(dir.File("no-such-folder") / "x.xml")));
  EXPECT_EQ(ZnXmlSaveFailed, doc.SaveFile(PathOf(dir.Path())));

  // Indented output in text mode: CRLF line ends on Windows, LF on Linux.
  ASSERT_EQ(ZnXmlSuccess, doc.SaveFile(PathOf(dir.File("out.xml"))));
  const std::string eol = test::IsWindowsBuild() ? "\r\n" : "\n";
  EXPECT_EQ("<r>" + eol + "    <a>1</a>" + eol + "</r>" + eol, test::ReadFileBytes(dir.File("out.xml")));

  EXPECT_EQ(ZnXmlInsertFailed, doc.CreateNewXmlFile(PathOf(dir.File("bad.xml")), "<r><a></r>"));
  EXPECT_EQ(ZnXmlInsertFailed, doc.CreateNewXmlFile(PathOf(dir.File("bad.xml")), ""));
  EXPECT_FALSE(std::filesystem::exists(dir.File("bad.xml")));
  ASSERT_EQ(ZnXmlSuccess, doc.CreateNewXmlFile(PathOf(dir.File("new.xml")), "<n v=\"2\"/>"));
  ZnXMLDocument back;
  ASSERT_EQ(ZnXmlSuccess, back.LoadFile(PathOf(dir.File("new.xml"))));
  EXPECT_EQ("2", back.RootElement().Attribute("v"));
}

TEST(XmlDocument, InsertDeclarationAndPrint) {
  test::TempDir dir;
  ZnXMLDocument doc;
  EXPECT_EQ(ZnXmlInsertFailed, doc.InsertDeclaration(""));
  EXPECT_EQ(ZnXmlInsertFailed, doc.InsertDeclaration(PathOf(dir.File("missing.xml"))));
  ASSERT_TRUE(test::WriteFileBytes(dir.File("full.xml"), "<r/>"));
  EXPECT_EQ(ZnXmlInsertFailed, doc.InsertDeclaration(PathOf(dir.File("full.xml"))));

  ASSERT_TRUE(test::WriteFileBytes(dir.File("empty.xml"), ""));
  ASSERT_EQ(ZnXmlSuccess, doc.InsertDeclaration(PathOf(dir.File("empty.xml"))));
  ZnXmlElement root = doc.NewElement("r");
  doc.InsertEndChild(&root);
  std::string printed;
  doc.Print(printed);
  EXPECT_EQ(std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r/>\n", 45), printed);

  // One empty element: its text plus the printer's NUL.
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
  EXPECT_TRUE(doc.IsDocumentNull());
  EXPECT_TRUE(doc.RootElement().IsElementNull());
  EXPECT_TRUE(doc.FirstNode("").IsElementNull());
  EXPECT_EQ(nullptr, doc.NewText("t"));  // NewText does not create the document
  doc.InsertEndChild(nullptr);
  EXPECT_TRUE(doc.IsDocumentNull());

  EXPECT_TRUE(doc.NewElement("").IsElementNull());
  EXPECT_FALSE(doc.IsDocumentNull());  // ...but NewElement does
  EXPECT_EQ(nullptr, doc.NewText(""));
  EXPECT_NE(nullptr, doc.NewText("t"));

  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<?xml version=\"1.0\"?><!-- c --><x/><y/><x id=\"2\"/>"));
  EXPECT_EQ("x", doc.RootElement().Name());
  EXPECT_EQ("y", doc.FirstNode("y").Name());
  EXPECT_EQ("", doc.FirstNode("x").Attribute("id"));
  EXPECT_EQ("2", doc.FirstNode("x").NextSiblingElement("x").Attribute("id"));
  EXPECT_TRUE(doc.FirstNode("X").IsElementNull());  // case-sensitive
}

}  // namespace
