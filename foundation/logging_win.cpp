// Windows default log sink: the debugger output. Only Windows-specific code goes in this file.
#include "UtilPlatform.h"
#include "foundation/logging_default.h"
#include "foundation/text_codec.h"

namespace PxsLog::detail {

void WriteToDefaultSink(Level level, const std::string& tag, const std::string& message) {
  const char* name = level == Level::Error ? "E" : level == Level::Info ? "I" : "D";
  const std::string line = std::string("[") + name + "][" + tag + "] " + message + "\n";
  const std::wstring wide = DE::detail::Utf8ToWide(line.data(), line.size());
  OutputDebugStringW(wide.c_str());
}

}  // namespace PxsLog::detail
