// The platform types the interface names (SYSTEMTIME, FILETIME, GUID, HANDLE, ...).
// Windows: <windows.h>, included lean. Linux: UtilLinuxTypes.h, with the same layouts.
#pragma once

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0601
#endif
#include <windows.h>
#else
#include "UtilLinuxTypes.h"
#endif
