// The platform's own log destination, used while no sink is installed.
#pragma once

#include <string>

#include "PxsLog.h"

namespace PxsLog::detail {

void WriteToDefaultSink(Level level, const std::string& tag, const std::string& message);

}  // namespace PxsLog::detail
