// The platform's source of fresh GUIDs, behind DE::GetGuidString.
#pragma once

#include "UtilPlatform.h"

namespace DE::detail {

// Fills `guid` with a new random (version 4) GUID; false when the platform cannot make one.
bool NewGuid(GUID& guid);

}  // namespace DE::detail
