// The XML document wrapper over tinyxml2: a document, element and attribute handle with null-safe,
// string-based operations. Names and texts are UTF-8 as tinyxml2 holds them. File paths are narrow
// strings handed to the C run-time's fopen: the ANSI code page on Windows, the file name's own
// bytes on Linux. Every operation on a null handle does nothing and yields an empty or null
// result; nothing throws. A document and its elements are used by one thread at a time.
#pragma once

#include <string>

#include "UtilExport.h"

namespace tinyxml2 {
class XMLDocument;
class XMLElement;
class XMLAttribute;
class XMLText;
}  // namespace tinyxml2

// Result of the document operations. Values not named here (1 to 13, 17, 18, and 14 from a parse)
// are tinyxml2's own error ids, passed through unchanged: 3 file not found, 5 read error, 6 to 12
// parse errors, 13 empty document, 14 mismatched element, 18 element depth exceeded.
enum ZnXmlError {
  ZnXmlSuccess = 0,
  ZnXmlInsertFailed = 14,   // InsertDeclaration(file) refused; CreateNewXmlFile could not parse
  ZnXmlNoDocument = 15,     // the document could not be created
  ZnXmlEmptyArgument = 16,  // empty file name or text, or nothing to save
  ZnXmlSaveFailed = 20,     // SaveFile could not open or write the file
};

class ZnXmlElement;

// A non-owning handle to an attribute of an element; null when default-constructed.
class UTIL_API ZnXmlAttribute {
 public:
  ZnXmlAttribute() = default;
  explicit ZnXmlAttribute(const tinyxml2::XMLAttribute* attribute) : attribute_(attribute) {}

  bool IsAttributeNull() const { return attribute_ == nullptr; }
  std::string Name() const;  // "" when null
  size_t NameSize() const;
  std::string Value() const;  // "" when null
  size_t ValueSize() const;
  ZnXmlAttribute NextAttribute() const;  // null after the last

 private:
  const tinyxml2::XMLAttribute* attribute_ = nullptr;
};

// An XML document. It owns its tinyxml2 document, which is created on first need with entity
// processing on and whitespace preserved, and deleted with this object. Not copyable.
class UTIL_API ZnXMLDocument {
 public:
  ZnXMLDocument() = default;
  ~ZnXMLDocument();
  ZnXMLDocument(const ZnXMLDocument&) = delete;
  ZnXMLDocument& operator=(const ZnXMLDocument&) = delete;

  // Replaces the content with the parsed text. 16 for empty text; on a parse error (tinyxml2's id)
  // the document is left empty.
  ZnXmlError Parse(const std::string& text);
  // Reads the whole file (binary, bytes as they are) and parses it. 16 for an empty path; 3 when
  // the file cannot be opened (a folder included); 5 on a read error; 13 for an empty file.
  ZnXmlError LoadFile(const std::string& path);
  // Prints the document, indented, to the file opened in text mode ("w": CRLF line ends on
  // Windows). 16 for an empty path or no document; 20 when the file cannot be opened or written.
  ZnXmlError SaveFile(const std::string& path);
  // Parse(content), then SaveFile(path): 14 for any parse error (empty content included).
  ZnXmlError CreateNewXmlFile(const std::string& path, std::string content);
  // For a file that exists and is empty: loads it and puts the declaration
  // <?xml version="1.0" encoding="UTF-8"?> first; returns 0. Anything else (empty path, missing
  // file, a file with content) gives 14. The file is not written; SaveFile does that.
  ZnXmlError InsertDeclaration(const std::string& path);
  // Creates the document if needed and puts the same declaration first.
  void InsertDeclaration();
  // The printed document, including the printer's terminating NUL: out.size() is the text's length
  // plus one. Without a document `out` is left untouched.
  void Print(std::string& out) const;

  ZnXmlElement RootElement() const;                       // first child element, or null
  ZnXmlElement FirstNode(const std::string& name) const;  // "" takes any name
  // A new element not yet linked anywhere (it belongs to this document); null for an empty name.
  ZnXmlElement NewElement(const std::string& name);
  // A new unlinked text node; null for empty text or when no document exists yet.
  tinyxml2::XMLText* NewText(const std::string& text);
  // Appends the element as the document's last child; nothing when either side is null.
  void InsertEndChild(ZnXmlElement* element);
  bool IsDocumentNull() const { return document_ == nullptr; }

 private:
  friend class ZnXmlElement;
  bool InitXmlDocument();  // false when the document cannot be created

  tinyxml2::XMLDocument* document_ = nullptr;
};

// A non-owning handle to an element of a document that the caller keeps alive; copies share the
// element. Name comparisons are exact and case-sensitive; an empty name means "any name".
class UTIL_API ZnXmlElement {
 public:
  ZnXmlElement() = default;
  explicit ZnXmlElement(tinyxml2::XMLElement* element) : element_(element) {}

  bool IsElementNull() const { return element_ == nullptr; }
  std::string Name() const;  // the tag name, "" when null
  size_t NameSize() const;
  // The value of the first child when that child is a text node (CDATA included), else "".
  std::string Value() const;
  size_t ValueSize() const;
  std::string Attribute(const std::string& name) const;  // "" when missing or name is empty

  void SetName(const std::string& name);        // nothing for an empty name
  void SetNodeValue(const std::string& value);  // sets the text; nothing for "" (cannot clear)
  // Sets the attribute, appending it when missing; nothing when name or value is empty.
  void AppendAttribute(const std::string& name, const std::string& value);
  void DeleteAttribute(const std::string& name);  // the first of that name; nothing when missing
  // "" gives the first attribute; otherwise the one with that name; null when none.
  ZnXmlAttribute FirstAttribute(const std::string& name) const;

  ZnXmlElement FirstNode(const std::string& name) const;
  ZnXmlElement LastNode(const std::string& name) const;
  ZnXmlElement NextSiblingElement(const std::string& name) const;

  // Appends child as the last child. Nothing when either is null, when child belongs to another
  // document, or when child is this element or one of its ancestors (that would make a loop).
  void AppendNode(ZnXmlElement* child);
  // Creates an element `name` in doc (creating doc if needed), with a text child when text is not
  // empty, and appends it to this element. Nothing for an empty name or a null element.
  void AppendNode(ZnXMLDocument& doc, const std::string& name, const std::string& text);
  // Inserts node right after `after`, which must be a child of this element; both in this
  // document and distinct. Otherwise (and under the loop rule of AppendNode) nothing.
  void InsertNode(ZnXmlElement after, ZnXmlElement node);
  // Deletes child, with its subtree, when it is a child of this element; child becomes null.
  void RemoveNode(ZnXmlElement& child);
  void RemoveAllChildNode();  // deletes every child node

 private:
  friend class ZnXMLDocument;
  friend struct ZnXmlElementTestPeer;  // lets the tests reach the private forms

  ZnXmlElement FirstChildElement(const std::string& name) const;
  ZnXmlElement LastChildElement(const std::string& name) const;
  // 1 when an element `name` was created in this element's document and appended; 0 for an
  // empty name or a null element.
  int InsertNewChildElement(const std::string& name);
  // Empty text: appends child. Otherwise a text node from doc is appended to child first.
  void InsertEndChild(ZnXMLDocument& doc, ZnXmlElement* child, const std::string& text);
  // Empty text: child becomes the first child. Otherwise the text node becomes child's first
  // child and child is appended as this element's LAST child (kept asymmetry).
  void InsertFirstChild(ZnXMLDocument& doc, ZnXmlElement* child, const std::string& text);
  // True when child may be linked under this element (see AppendNode).
  bool CanAdopt(const ZnXmlElement* child) const;

  tinyxml2::XMLElement* element_ = nullptr;
};
