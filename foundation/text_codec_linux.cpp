// Linux bindings of the code-page conversions. Only Linux-specific code goes in this file.
#include "foundation/text_codec.h"

#include "platform/linux/ansi_codepage.h"
#include "platform/linux/utf8_codec.h"

namespace DE::detail {

std::wstring ToWide(CodePage page, const char* text, std::size_t length) {
  if (text == nullptr || length == 0) return std::wstring();
  return page == CodePage::Utf8 ? linux_impl::DecodeUtf8(text, length)
                                : linux_impl::AnsiCodePage::Get().Decode(text, length);
}

std::string FromWide(CodePage page, const wchar_t* text, std::size_t length) {
  if (text == nullptr || length == 0) return std::string();
  return page == CodePage::Utf8 ? linux_impl::EncodeUtf8(text, length)
                                : linux_impl::AnsiCodePage::Get().Encode(text, length);
}

}  // namespace DE::detail
