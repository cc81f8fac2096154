// ZnXmlElement and ZnXmlAttribute: reading, editing, the null-safe rules and the kept asymmetry.
#include <gtest/gtest.h>

#include <string>

#include "ZnXml.h"

// Reaches the element's private insertion forms: InsertFirstChild (`first`) or InsertEndChild.
struct ZnXmlElementTestPeer {
  static void Insert(bool first, ZnXmlElement& parent, ZnXMLDocument& doc, ZnXmlElement* child,
                     const std::string& text) {
    first ? parent.InsertFirstChild(doc, child, text) : parent.InsertEndChild(doc, child, text);
  }
  static int InsertNewChildElement(ZnXmlElement& parent, const std::string& name) {
    return parent.InsertNewChildElement(name);
  }
};

namespace {

// The printed document without the printer's trailing NUL.
std::string Printed(const ZnXMLDocument& doc) {
  std::string out;
  doc.Print(out);
  if (!out.empty() && out.back() == '\0') out.pop_back();
  return out;
}

// Child element names in order, joined by ",".
std::string ChildNames(const ZnXmlElement& parent) {
  std::string names;
  for (ZnXmlElement e = parent.FirstNode(""); !e.IsElementNull(); e = e.NextSiblingElement("")) {
    names += (names.empty() ? "" : ",") + e.Name();
  }
  return names;
}

TEST(XmlElement, ReadingValuesAndAttributes) {
  ZnXMLDocument doc;
  ASSERT_EQ(ZnXmlSuccess,
            doc.Parse("<r a=\"1\" b=\"2\" c=\"3\"><t>text<i/>tail</t><e><i/>x</e><c><![CDATA[<z>]]></c>"
                      "<n>one</n><m/><n>two</n></r>"));
  ZnXmlElement root = doc.RootElement();
  EXPECT_EQ("text", root.FirstNode("t").Value());
  EXPECT_EQ("", root.FirstNode("e").Value());  // first child is an element
  EXPECT_EQ("<z>", root.FirstNode("c").Value());
  EXPECT_EQ("two", root.LastNode("n").Value());
  EXPECT_EQ("m", root.FirstNode("n").NextSiblingElement("").Name());

  EXPECT_EQ("2|", root.Attribute("b") + "|" + root.Attribute("B"));
  ZnXmlAttribute first = root.FirstAttribute("");
  EXPECT_EQ("a1", first.Name() + first.Value());
  EXPECT_EQ("b", first.NextAttribute().Name());
  EXPECT_TRUE(root.FirstAttribute("c").NextAttribute().IsAttributeNull());
  EXPECT_TRUE(root.FirstAttribute("zz").IsAttributeNull());
}

TEST(XmlElement, Editing) {
  ZnXMLDocument doc;
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<r a=\"1\"><v>old</v></r>"));
  ZnXmlElement root = doc.RootElement();
  ZnXmlElement v = root.FirstNode("v");
  v.SetNodeValue("");
  EXPECT_EQ("old", v.Value());  // an empty value cannot clear the text
  v.SetNodeValue("new");
  v.SetName("");
  v.SetName("w");
  root.AppendAttribute("z", "9");
  root.AppendAttribute("a", "5");  // existing: replaced in place
  root.AppendAttribute("", "x");
  root.AppendAttribute("y", "");
  EXPECT_EQ("<r a=\"5\" z=\"9\">\n    <w>new</w>\n</r>\n", Printed(doc));
  root.DeleteAttribute("a");
  root.DeleteAttribute("missing");
  EXPECT_EQ("z", root.FirstAttribute("").Name());

  root.AppendNode(doc, "", "ignored");
  root.AppendNode(doc, "k", "");
  root.AppendNode(doc, "t", "txt");
  EXPECT_EQ("txt", root.LastNode("").Value());
  EXPECT_EQ(1, ZnXmlElementTestPeer::InsertNewChildElement(root, "q"));
  EXPECT_EQ(0, ZnXmlElementTestPeer::InsertNewChildElement(root, ""));
  // InsertNode: after a middle child, after the last one, and refusals.
  ZnXmlElement n1 = doc.NewElement("n1");
  root.InsertNode(root.FirstNode("k"), n1);
  ZnXmlElement n2 = doc.NewElement("n2");
  root.InsertNode(root.LastNode(""), n2);
  ZnXmlElement stranger = doc.NewElement("s");
  root.InsertNode(stranger, doc.NewElement("s2"));            // `after` is not a child
  root.InsertNode(root.FirstNode("k"), root.FirstNode("k"));  // not distinct
  ZnXMLDocument other;
  root.InsertNode(root.FirstNode("k"), other.NewElement("o"));  // another document
  EXPECT_EQ("w,k,n1,t,q,n2", ChildNames(root));

  ZnXmlElement k = root.FirstNode("k");
  ZnXmlElement notChild = doc.NewElement("x");
  root.RemoveNode(notChild);
  EXPECT_FALSE(notChild.IsElementNull());
  root.RemoveNode(k);
  EXPECT_TRUE(k.IsElementNull());
  EXPECT_EQ("w,n1,t,q,n2", ChildNames(root));
  root.RemoveAllChildNode();
  EXPECT_EQ("<r z=\"9\"/>\n", Printed(doc));
}

TEST(XmlElement, InsertFirstChildAppendsWhenTextIsGiven) {
  ZnXMLDocument doc;
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<r><a/></r>"));
  ZnXmlElement root = doc.RootElement();
  ZnXmlElement front = doc.NewElement("front"), withText = doc.NewElement("wt");
  ZnXmlElement end = doc.NewElement("end"), plain = doc.NewElement("plain");
  ZnXmlElementTestPeer::Insert(true, root, doc, &front, "");
  ZnXmlElementTestPeer::Insert(true, root, doc, &withText, "hello");  // the end, not the front
  ZnXmlElementTestPeer::Insert(false, root, doc, &end, "e");
  ZnXmlElementTestPeer::Insert(false, root, doc, &plain, "");
  EXPECT_EQ("<r>\n    <front/>\n    <a/>\n    <wt>hello</wt>\n    <end>e</end>\n    <plain/>\n</r>\n",
            Printed(doc));
}

TEST(XmlElement, NullHandlesAndLoopsAreHarmless) {
  ZnXmlElement null;
  ZnXMLDocument doc;
  EXPECT_EQ("", null.Name() + null.Value() + null.Attribute("a"));
  EXPECT_TRUE(null.FirstNode("").IsElementNull() && null.LastNode("").IsElementNull() &&
              null.NextSiblingElement("").IsElementNull() && null.FirstAttribute("").IsAttributeNull());
  null.SetName("n");
  null.SetNodeValue("v");
  null.AppendAttribute("a", "b");
  null.DeleteAttribute("a");
  null.AppendNode(nullptr);
  null.AppendNode(doc, "x", "y");
  EXPECT_TRUE(doc.IsDocumentNull());
  null.InsertNode(ZnXmlElement(), ZnXmlElement());
  null.RemoveNode(null);
  null.RemoveAllChildNode();
  EXPECT_EQ(0, ZnXmlElementTestPeer::InsertNewChildElement(null, "x"));
  EXPECT_TRUE(ZnXmlAttribute().Name().empty() && ZnXmlAttribute().NextAttribute().IsAttributeNull());

  // Linking an element below itself or its own descendant is refused.
  ASSERT_EQ(ZnXmlSuccess, doc.Parse("<r><a><b/></a></r>"));
  ZnXmlElement root = doc.RootElement();
  ZnXmlElement a = root.FirstNode("a");
  ZnXmlElement b = a.FirstNode("b");
  b.AppendNode(&root);
  b.AppendNode(&b);
  a.AppendNode(&root);
  ZnXmlElementTestPeer::Insert(true, b, doc, &a, "");
  ZnXmlElementTestPeer::Insert(false, b, doc, &a, "t");
  root.AppendNode(&null);
  EXPECT_EQ("<r>\n    <a>\n        <b/>\n    </a>\n</r>\n", Printed(doc));
}

}  // namespace
