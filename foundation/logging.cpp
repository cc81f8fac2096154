// Sink selection for the logging facade; the platform default sink is in logging_<platform>.cpp.
#include "PxsLog.h"

#include <mutex>

#include "foundation/logging_default.h"

namespace PxsLog {
namespace {

std::mutex& SinkMutex() {
  static std::mutex mutex;
  return mutex;
}

Sink& CurrentSink() {
  static Sink sink;
  return sink;
}

}  // namespace

Sink SetSink(Sink sink) {
  std::lock_guard<std::mutex> lock(SinkMutex());
  Sink previous = std::move(CurrentSink());
  CurrentSink() = std::move(sink);
  return previous;
}

void Write(Level level, const std::string& tag, const std::string& message) {
  Sink sink;
  {
    // Copy under the lock and call outside it, so a sink may log or replace itself.
    std::lock_guard<std::mutex> lock(SinkMutex());
    sink = CurrentSink();
  }
  if (sink) {
    sink(level, tag, message);
  } else {
    detail::WriteToDefaultSink(level, tag, message);
  }
}

}  // namespace PxsLog
