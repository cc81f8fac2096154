# The command-line tool against independent references (Python's codecs, base64 and binascii) and
# the library's exports; when a Windows build is named, its tool under Wine and its exports too.
if(NOT CMAKE_CROSSCOMPILING)
  set(UTIL_WINDOWS_BUILD_DIR "" CACHE PATH "A Windows build folder whose utl.exe and Util.dll the cross-build checks compare against")
  find_package(Python3 COMPONENTS Interpreter REQUIRED)
  add_test(NAME cli_tool
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/cli_test.py --utl $<TARGET_FILE:utl>
                   --library $<TARGET_FILE:Util> --windows-build "${UTIL_WINDOWS_BUILD_DIR}")
  set_tests_properties(cli_tool PROPERTIES TIMEOUT 600)
endif()
