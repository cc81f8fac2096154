# Cross-builds for Windows x64 with Debian's MinGW-w64 (posix threads variant, needed for
# std::thread/std::mutex) and runs the results under Wine.
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake ...
# Dependencies come from scripts/build-windows-deps.sh (same UTIL_DEPS_DIR rule).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(UTIL_MINGW_TRIPLE x86_64-w64-mingw32)
# The -posix names are explicit: the plain names follow update-alternatives, which may be win32.
set(CMAKE_C_COMPILER ${UTIL_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${UTIL_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${UTIL_MINGW_TRIPLE}-windres)

if(DEFINED ENV{UTIL_DEPS_DIR} AND NOT "$ENV{UTIL_DEPS_DIR}" STREQUAL "")
  set(UTIL_DEPS_PREFIX "$ENV{UTIL_DEPS_DIR}/mingw64")
else()
  set(UTIL_DEPS_PREFIX "$ENV{HOME}/.cache/util-deps/mingw64")
endif()

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

# Executables linked against the shared runtime need libstdc++-6, libgcc_s_seh-1 and
# libwinpthread-1; ask the compiler where they are and hand the dirs to Wine.
set(UTIL_WINEPATH "")
foreach(_util_dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${_util_dll}
                  OUTPUT_VARIABLE _util_dll_path OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(IS_ABSOLUTE "${_util_dll_path}" AND EXISTS "${_util_dll_path}")
    get_filename_component(_util_dll_dir "${_util_dll_path}" DIRECTORY)
    get_filename_component(_util_dll_dir "${_util_dll_dir}" REALPATH)
    list(APPEND UTIL_WINEPATH "${_util_dll_dir}")
  endif()
endforeach()
list(REMOVE_DUPLICATES UTIL_WINEPATH)
# Wine separates WINEPATH entries with ';', which is also CMake's list separator.
string(REPLACE ";" "\\;" _util_winepath_arg "WINEPATH=${UTIL_WINEPATH}")

if(UTIL_WINE64)
  # Through env so try_run, ctest and gtest_discover_tests find the runtime DLLs without extra setup.
  set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/env "${_util_winepath_arg}" "${UTIL_WINE64}")
endif()
