// Reading typed values out of configuration elements, shared by the configuration readers.
#pragma once

#include <string>
#include <vector>

class ZnXmlElement;

namespace DE::detail {

// atoi of the text: optional blanks and sign, then leading digits; 0 when there are none. Values
// beyond int are clamped (as the Windows run-time's atoi does) instead of being undefined.
int AtoiText(const std::string& text);

// The child's text into `out` when the child exists and its text is not empty; else `out` keeps
// its value. The int form converts with AtoiText.
void ReadChildText(const ZnXmlElement& parent, const char* name, std::string& out);
void ReadChildInt(const ZnXmlElement& parent, const char* name, int& out);
// When the child exists, `out` becomes its text split at ";" (empty fields dropped by DE::Split).
void ReadChildList(const ZnXmlElement& parent, const char* name, std::vector<std::string>& out);

}  // namespace DE::detail
