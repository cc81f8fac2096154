// Linux default log sink: syslog. Only Linux-specific code goes in this file.
#include <syslog.h>

#include "foundation/logging_default.h"

namespace PxsLog::detail {

void WriteToDefaultSink(Level level, const std::string& tag, const std::string& message) {
  const int priority = level == Level::Error ? LOG_ERR : level == Level::Info ? LOG_INFO : LOG_DEBUG;
  // No openlog(): the host process owns the syslog identity.
  syslog(LOG_USER | priority, "[%s] %s", tag.c_str(), message.c_str());
}

}  // namespace PxsLog::detail
