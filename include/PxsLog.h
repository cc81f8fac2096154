// The library's logging facade: PXSLOGE / PXSLOGI / PXSLOGD (tag, message).
//
// Every message goes to one process-wide sink. The default sink is the debugger output on
// Windows (OutputDebugStringW) and syslog on Linux. Hosts and tests install their own with
// PxsLog::SetSink, for example to forward into the suite's logging library or to assert the
// messages the library promises. Tags and messages are UTF-8.
#pragma once

#include <functional>
#include <string>

#include "UtilExport.h"

namespace PxsLog {

enum class Level { Error, Info, Debug };

using Sink = std::function<void(Level level, const std::string& tag, const std::string& message)>;

// Replaces the sink; an empty function restores the platform default. Returns the previous sink
// (empty when it was the default), so a test can put it back.
UTIL_API Sink SetSink(Sink sink);

// Delivers one message to the current sink. Safe to call from any thread.
UTIL_API void Write(Level level, const std::string& tag, const std::string& message);

}  // namespace PxsLog

#define PXSLOGE(tag, message) ::PxsLog::Write(::PxsLog::Level::Error, (tag), (message))
#define PXSLOGI(tag, message) ::PxsLog::Write(::PxsLog::Level::Info, (tag), (message))
#define PXSLOGD(tag, message) ::PxsLog::Write(::PxsLog::Level::Debug, (tag), (message))
