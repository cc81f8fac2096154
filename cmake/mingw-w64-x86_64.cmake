# Cross-builds for Windows x64 with Debian's MinGW-w64 (posix threads variant, needed for
# std::thread/std::mutex) and runs the results under Wine.
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake ...
# Dependencies come from scripts/build-windows-deps.sh, in ${UTIL_DEPS_DIR:-$HOME/.cache/util-deps}/mingw64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(UTIL_MINGW_TRIPLE x86_64-w64-mingw32)
# The -posix names are explicit: the plain names follow update-alternatives, which may be win32.
set(CMAKE_C_COMPILER ${UTIL_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${UTIL_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${UTIL_MINGW_TRIPLE}-windres)

# -DUTIL_DEPS_DIR=... wins over the environment variable; try_compile projects get it passed on.
if(NOT UTIL_DEPS_DIR)
  if(DEFINED ENV{UTIL_DEPS_DIR} AND NOT "$ENV{UTIL_DEPS_DIR}" STREQUAL "")
    set(UTIL_DEPS_DIR "$ENV{UTIL_DEPS_DIR}")
  else()
    set(UTIL_DEPS_DIR "$ENV{HOME}/.cache/util-deps")
  endif()
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES UTIL_DEPS_DIR)
set(UTIL_DEPS_PREFIX "${UTIL_DEPS_DIR}/mingw64")

set(CMAKE_FIND_ROOT_PATH "${UTIL_DEPS_PREFIX}" /usr/${UTIL_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Keep pkg-config away from the host's Linux .pc files.
set(ENV{PKG_CONFIG_LIBDIR} "${UTIL_DEPS_PREFIX}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# Debian's wine64 package installs the loader in /usr/lib/wine and puts nothing on PATH.
find_program(UTIL_WINE64 NAMES wine64 PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)

if(UTIL_WINE64)
  # The MinGW runtime DLLs are copied beside the programs by the build (UtilPlatform.cmake), so
  # Wine needs no search path.
  set(CMAKE_CROSSCOMPILING_EMULATOR "${UTIL_WINE64}")
endif()
