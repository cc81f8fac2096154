// Typed reads of configuration elements.
#include "config/config_values.h"

#include <cctype>
#include <climits>

#include "DEString.h"
#include "ZnXml.h"

namespace DE::detail {

int AtoiText(const std::string& text) {
  std::size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  long long value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10 + (text[i] - '0');
    if (value > static_cast<long long>(INT_MAX) + 1) break;  // clamped below
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

void ReadChildText(const ZnXmlElement& parent, const char* name, std::string& out) {
  const std::string text = parent.FirstNode(name).Value();
  if (!text.empty()) out = text;
}

void ReadChildInt(const ZnXmlElement& parent, const char* name, int& out) {
  const std::string text = parent.FirstNode(name).Value();
  if (!text.empty()) out = AtoiText(text);
}

void ReadChildList(const ZnXmlElement& parent, const char* name, std::vector<std::string>& out) {
  const ZnXmlElement child = parent.FirstNode(name);
  if (child.IsElementNull()) return;
  out.clear();
  DE::Split(child.Value(), ";", out);
}

}  // namespace DE::detail
