// ZnXmlElement and ZnXmlAttribute: the element and attribute handles of the XML wrapper.
#include <tinyxml2.h>

#include "ZnXml.h"

namespace {

const char* NameOrAny(const std::string& name) { return name.empty() ? nullptr : name.c_str(); }

std::string TextOf(const char* text) { return text != nullptr ? std::string(text) : std::string(); }

}  // namespace

// ---- ZnXmlAttribute ----

std::string ZnXmlAttribute::Name() const {
  return attribute_ != nullptr ? TextOf(attribute_->Name()) : std::string();
}

size_t ZnXmlAttribute::NameSize() const { return Name().size(); }

std::string ZnXmlAttribute::Value() const {
  return attribute_ != nullptr ? TextOf(attribute_->Value()) : std::string();
}

size_t ZnXmlAttribute::ValueSize() const { return Value().size(); }

ZnXmlAttribute ZnXmlAttribute::NextAttribute() const {
  return ZnXmlAttribute(attribute_ != nullptr ? attribute_->Next() : nullptr);
}

// ---- ZnXmlElement: reading ----

std::string ZnXmlElement::Name() const {
  return element_ != nullptr ? TextOf(element_->Name()) : std::string();
}

size_t ZnXmlElement::NameSize() const { return Name().size(); }

std::string ZnXmlElement::Value() const {
  if (element_ == nullptr) return std::string();
  const tinyxml2::XMLNode* first = element_->FirstChild();
  if (first == nullptr || first->ToText() == nullptr) return std::string();
  return TextOf(first->Value());
}

size_t ZnXmlElement::ValueSize() const { return Value().size(); }

std::string ZnXmlElement::Attribute(const std::string& name) const {
  if (element_ == nullptr || name.empty()) return std::string();
  return TextOf(element_->Attribute(name.c_str()));
}

ZnXmlAttribute ZnXmlElement::FirstAttribute(const std::string& name) const {
  if (element_ == nullptr) return ZnXmlAttribute();
  if (name.empty()) return ZnXmlAttribute(element_->FirstAttribute());
  return ZnXmlAttribute(element_->FindAttribute(name.c_str()));
}

ZnXmlElement ZnXmlElement::FirstChildElement(const std::string& name) const {
  return ZnXmlElement(element_ != nullptr ? element_->FirstChildElement(NameOrAny(name)) : nullptr);
}

ZnXmlElement ZnXmlElement::LastChildElement(const std::string& name) const {
  return ZnXmlElement(element_ != nullptr ? element_->LastChildElement(NameOrAny(name)) : nullptr);
}

ZnXmlElement ZnXmlElement::FirstNode(const std::string& name) const { return FirstChildElement(name); }

ZnXmlElement ZnXmlElement::LastNode(const std::string& name) const { return LastChildElement(name); }

ZnXmlElement ZnXmlElement::NextSiblingElement(const std::string& name) const {
  return ZnXmlElement(element_ != nullptr ? element_->NextSiblingElement(NameOrAny(name)) : nullptr);
}

// ---- ZnXmlElement: editing ----

void ZnXmlElement::SetName(const std::string& name) {
  if (element_ != nullptr && !name.empty()) element_->SetName(name.c_str());
}

void ZnXmlElement::SetNodeValue(const std::string& value) {
  if (element_ != nullptr && !value.empty()) element_->SetText(value.c_str());
}

void ZnXmlElement::AppendAttribute(const std::string& name, const std::string& value) {
  if (element_ != nullptr && !name.empty() && !value.empty())
    element_->SetAttribute(name.c_str(), value.c_str());
}

void ZnXmlElement::DeleteAttribute(const std::string& name) {
  if (element_ != nullptr && !name.empty()) element_->DeleteAttribute(name.c_str());
}

bool ZnXmlElement::CanAdopt(const ZnXmlElement* child) const {
  if (element_ == nullptr || child == nullptr || child->element_ == nullptr) return false;
  if (child->element_->GetDocument() != element_->GetDocument()) return false;
  // tinyxml2 does not check for loops: linking an ancestor below its descendant would make one.
  for (const tinyxml2::XMLNode* node = element_; node != nullptr; node = node->Parent()) {
    if (node == child->element_) return false;
  }
  return true;
}

int ZnXmlElement::InsertNewChildElement(const std::string& name) {
  if (element_ == nullptr || name.empty()) return 0;
  tinyxml2::XMLElement* created = element_->GetDocument()->NewElement(name.c_str());
  return element_->InsertEndChild(created) != nullptr ? 1 : 0;
}

void ZnXmlElement::AppendNode(ZnXmlElement* child) {
  if (CanAdopt(child)) element_->InsertEndChild(child->element_);
}

void ZnXmlElement::AppendNode(ZnXMLDocument& doc, const std::string& name, const std::string& text) {
  if (element_ == nullptr || name.empty()) return;
  ZnXmlElement created = doc.NewElement(name);
  if (created.IsElementNull()) return;
  if (tinyxml2::XMLText* node = doc.NewText(text)) created.element_->InsertEndChild(node);
  AppendNode(&created);
}

void ZnXmlElement::InsertEndChild(ZnXMLDocument& doc, ZnXmlElement* child, const std::string& text) {
  if (!CanAdopt(child)) return;
  if (!text.empty()) {
    tinyxml2::XMLText* node = doc.NewText(text);
    if (node == nullptr || node->GetDocument() != element_->GetDocument()) return;
    child->element_->InsertEndChild(node);
  }
  element_->InsertEndChild(child->element_);
}

void ZnXmlElement::InsertFirstChild(ZnXMLDocument& doc, ZnXmlElement* child, const std::string& text) {
  if (!CanAdopt(child)) return;
  if (text.empty()) {
    element_->InsertFirstChild(child->element_);
    return;
  }
  tinyxml2::XMLText* node = doc.NewText(text);
  if (node == nullptr || node->GetDocument() != element_->GetDocument()) return;
  child->element_->InsertFirstChild(node);
  element_->InsertEndChild(child->element_);  // the end, not the front: kept on purpose
}

void ZnXmlElement::InsertNode(ZnXmlElement after, ZnXmlElement node) {
  if (after.element_ == nullptr || after.element_ == node.element_) return;
  if (after.element_->Parent() != element_ || !CanAdopt(&node)) return;
  element_->InsertAfterChild(after.element_, node.element_);
}

void ZnXmlElement::RemoveNode(ZnXmlElement& child) {
  if (element_ == nullptr || child.element_ == nullptr || child.element_->Parent() != element_) return;
  element_->DeleteChild(child.element_);
  child.element_ = nullptr;
}

void ZnXmlElement::RemoveAllChildNode() {
  if (element_ != nullptr) element_->DeleteChildren();
}
