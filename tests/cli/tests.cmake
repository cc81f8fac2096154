# The command-line tool against independent references (Python's codecs, base64 and binascii),
# and, when a Windows build is named, the Windows tool under Wine on the same inputs.
if(NOT CMAKE_CROSSCOMPILING)
  set(UTIL_WINDOWS_BUILD_DIR "" CACHE PATH "A Windows build folder whose utl.exe the cross-build checks compare against")
  find_package(Python3 COMPONENTS Interpreter REQUIRED)
  add_test(NAME cli_tool
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/cli_test.py
                   --utl $<TARGET_FILE:utl> --windows-build "${UTIL_WINDOWS_BUILD_DIR}")
  set_tests_properties(cli_tool PROPERTIES TIMEOUT 600)
endif()

if(NOT CMAKE_CROSSCOMPILING)
  add_test(NAME exports
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/exports_test.py
                   --library $<TARGET_FILE:Util> --windows-build "${UTIL_WINDOWS_BUILD_DIR}")
endif()
