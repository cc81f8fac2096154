// ZnXMLDocument: the document half of the XML wrapper over tinyxml2.
#include <tinyxml2.h>

#include <new>

#include "ZnXml.h"
#include "config/xml_file.h"

namespace {

constexpr char kDeclaration[] = "xml version=\"1.0\" encoding=\"UTF-8\"";

}  // namespace

ZnXMLDocument::~ZnXMLDocument() { delete document_; }

bool ZnXMLDocument::InitXmlDocument() {
  if (document_ == nullptr) {
    document_ = new (std::nothrow) tinyxml2::XMLDocument(true, tinyxml2::PRESERVE_WHITESPACE);
  }
  return document_ != nullptr;
}

ZnXmlError ZnXMLDocument::Parse(const std::string& text) {
  if (text.empty()) return ZnXmlEmptyArgument;
  if (!InitXmlDocument()) return ZnXmlNoDocument;
  document_->Clear();
  const tinyxml2::XMLError result = document_->Parse(text.data(), text.size());
  if (result != tinyxml2::XML_SUCCESS) document_->DeleteChildren();
  return static_cast<ZnXmlError>(result);
}

ZnXmlError ZnXMLDocument::LoadFile(const std::string& path) {
  if (path.empty()) return ZnXmlEmptyArgument;
  if (!InitXmlDocument()) return ZnXmlNoDocument;
  std::FILE* file = DE::detail::OpenXmlFile(path, "rb");
  if (file == nullptr) {
    document_->Clear();
    return static_cast<ZnXmlError>(tinyxml2::XML_ERROR_FILE_NOT_FOUND);
  }
  // tinyxml2 reads the whole stream, reports 5 or 13 itself and drops a partial tree.
  const tinyxml2::XMLError result = document_->LoadFile(file);
  std::fclose(file);
  return static_cast<ZnXmlError>(result);
}

ZnXmlError ZnXMLDocument::SaveFile(const std::string& path) {
  if (path.empty() || document_ == nullptr) return ZnXmlEmptyArgument;
  std::FILE* file = DE::detail::OpenXmlFile(path, "w");
  if (file == nullptr) return ZnXmlSaveFailed;
  const tinyxml2::XMLError printed = document_->SaveFile(file, false);
  const bool closed = std::fclose(file) == 0;
  return printed == tinyxml2::XML_SUCCESS && closed ? ZnXmlSuccess : ZnXmlSaveFailed;
}

ZnXmlError ZnXMLDocument::CreateNewXmlFile(const std::string& path, std::string content) {
  const ZnXmlError parsed = Parse(content);
  content.clear();
  if (parsed != ZnXmlSuccess) return ZnXmlInsertFailed;
  return SaveFile(path);
}

ZnXmlError ZnXMLDocument::InsertDeclaration(const std::string& path) {
  if (path.empty()) return ZnXmlInsertFailed;
  // Only a file that exists and is empty takes a declaration.
  if (LoadFile(path) != static_cast<ZnXmlError>(tinyxml2::XML_ERROR_EMPTY_DOCUMENT)) return ZnXmlInsertFailed;
  document_->InsertFirstChild(document_->NewDeclaration(kDeclaration));
  return ZnXmlSuccess;
}

void ZnXMLDocument::InsertDeclaration() {
  if (!InitXmlDocument()) return;
  document_->InsertFirstChild(document_->NewDeclaration(kDeclaration));
}

void ZnXMLDocument::Print(std::string& out) const {
  if (document_ == nullptr) return;
  tinyxml2::XMLPrinter printer;
  document_->Print(&printer);
  // CStrSize() counts the terminating NUL; callers rely on getting it too.
  out.assign(printer.CStr(), static_cast<size_t>(printer.CStrSize()));
}

ZnXmlElement ZnXMLDocument::RootElement() const {
  return ZnXmlElement(document_ != nullptr ? document_->FirstChildElement() : nullptr);
}

ZnXmlElement ZnXMLDocument::FirstNode(const std::string& name) const {
  if (document_ == nullptr) return ZnXmlElement();
  return ZnXmlElement(document_->FirstChildElement(name.empty() ? nullptr : name.c_str()));
}

ZnXmlElement ZnXMLDocument::NewElement(const std::string& name) {
  if (!InitXmlDocument() || name.empty()) return ZnXmlElement();
  return ZnXmlElement(document_->NewElement(name.c_str()));
}

tinyxml2::XMLText* ZnXMLDocument::NewText(const std::string& text) {
  if (document_ == nullptr || text.empty()) return nullptr;
  return document_->NewText(text.c_str());
}

void ZnXMLDocument::InsertEndChild(ZnXmlElement* element) {
  if (document_ == nullptr || element == nullptr || element->element_ == nullptr) return;
  if (element->element_->GetDocument() != document_) return;
  document_->InsertEndChild(element->element_);
}
