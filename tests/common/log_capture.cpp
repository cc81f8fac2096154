#include "common/log_capture.h"

namespace test {

LogCapture::LogCapture() {
  previous_ =
      PxsLog::SetSink([this](PxsLog::Level level, const std::string& tag, const std::string& message) {
        std::lock_guard<std::mutex> lock(mutex_);
        messages_.push_back({level, tag, message});
      });
}

LogCapture::~LogCapture() { PxsLog::SetSink(previous_); }

std::vector<LoggedMessage> LogCapture::Messages() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return messages_;
}

}  // namespace test
