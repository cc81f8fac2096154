# Compiler flags, platform file selection and system libraries shared by every target.

if(WIN32)
  set(UTIL_PLATFORM_SUFFIX win)
  set(UTIL_OTHER_PLATFORM_SUFFIX linux)
else()
  set(UTIL_PLATFORM_SUFFIX linux)
  set(UTIL_OTHER_PLATFORM_SUFFIX win)
endif()

add_compile_options(-Wall -Wextra)
if(WIN32)
  # Unicode Win32 entry points and a Windows 7 floor, the same for every translation unit.
  add_compile_definitions(UNICODE _UNICODE)
else()
  set(CMAKE_CXX_VISIBILITY_PRESET hidden)
  set(CMAKE_C_VISIBILITY_PRESET hidden)
  set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()

if(UTIL_SANITIZE AND NOT WIN32)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# util_collect_sources(<out> <dir>...): every .cpp below the folders, less the other platform's files.
function(util_collect_sources out)
  set(found)
  foreach(dir IN LISTS ARGN)
    file(GLOB_RECURSE dir_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${dir}/*.cpp)
    list(APPEND found ${dir_sources})
  endforeach()
  list(FILTER found EXCLUDE REGEX "_${UTIL_OTHER_PLATFORM_SUFFIX}\\.cpp$")
  list(SORT found)
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# System libraries the platform bindings call.
function(util_link_platform_libraries target)
  if(WIN32)
    target_link_libraries(${target} PRIVATE ole32 oleaut32 advapi32 shlwapi shell32 version netapi32 user32)
  else()
    find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    find_package(SQLite3 REQUIRED)
    target_link_libraries(${target} PRIVATE ${CMAKE_DL_LIBS} OpenSSL::Crypto SQLite::SQLite3)
    # Export the interface only, not the standard-library templates it instantiates.
    target_link_options(${target} PRIVATE -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/libUtil.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/libUtil.map)
  endif()
  # XML under config/: Debian's shared libtinyxml2 on Linux, the static one of the deps prefix on Windows.
  find_package(tinyxml2 CONFIG REQUIRED)
  target_link_libraries(${target} PRIVATE tinyxml2::tinyxml2)
endfunction()

# Programs and the library land side by side, so Windows programs find Util.dll next to them.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# MinGW programs need the compiler's runtime DLLs; copy them beside the programs so that Wine
# (or a Windows machine) runs them without a search path.
if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  foreach(runtime_dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime_dll}
                    OUTPUT_VARIABLE runtime_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(IS_ABSOLUTE "${runtime_path}" AND EXISTS "${runtime_path}")
      file(COPY ${runtime_path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    else()
      message(WARNING "MinGW runtime ${runtime_dll} not found; Windows programs may not start")
    endif()
  endforeach()
endif()
