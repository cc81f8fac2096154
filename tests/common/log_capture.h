// Collects what the library logs while the object lives, so tests can assert messages.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "PxsLog.h"

namespace test {

struct LoggedMessage {
  PxsLog::Level level;
  std::string tag;
  std::string message;
};

class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<LoggedMessage> Messages() const;

 private:
  mutable std::mutex mutex_;
  std::vector<LoggedMessage> messages_;
  PxsLog::Sink previous_;
};

}  // namespace test
