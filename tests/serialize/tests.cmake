# The record format in this build; and, in the Linux build, the cross-build check: record files
# written by the Windows tool under Wine read back here and the other way round. That check needs
# a Windows build folder (-DUTIL_WINDOWS_BUILD_DIR=<path>) and reports itself skipped without one.
util_add_gtest(serialize serialize_test)

if(NOT CMAKE_CROSSCOMPILING)
  set(UTIL_WINDOWS_BUILD_DIR "" CACHE PATH "A Windows build folder whose utl.exe the cross-build checks compare against")
  add_test(NAME serialize_cross_build
           COMMAND ${CMAKE_COMMAND} -DLINUX_UTL=$<TARGET_FILE:utl> -DWINDOWS_BUILD=${UTIL_WINDOWS_BUILD_DIR}
                   -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/serialize_cross_build -P ${CMAKE_CURRENT_LIST_DIR}/cross_build.cmake)
  set_tests_properties(serialize_cross_build PROPERTIES SKIP_REGULAR_EXPRESSION "skipped: " TIMEOUT 600)
endif()
