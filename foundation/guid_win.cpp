// Windows GUID binding: only the call to CoCreateGuid belongs here.
#include <objbase.h>

#include "foundation/guid.h"

namespace DE::detail {

// CoCreateGuid needs no COM initialisation.
bool NewGuid(GUID& guid) { return SUCCEEDED(CoCreateGuid(&guid)); }

}  // namespace DE::detail
