# Record files cross the builds unchanged: the Linux and the Windows utl (under Wine) each write
# the same SimpleFileItem list (names outside the BMP included), the two files must be identical,
# and each build's record-dump of the other's file must read the same as its dump of its own.
#   cmake -DLINUX_UTL=<utl> -DWINDOWS_BUILD=<build folder> -DWORK_DIR=<scratch folder> -P cross_build.cmake
# Prints "skipped: <reason>" (which CTest reports as a skip) when no Windows build is named, it
# has no utl.exe, or Wine is missing.
cmake_minimum_required(VERSION 3.20)

set(windows_utl "${WINDOWS_BUILD}/bin/utl.exe")
if(NOT WINDOWS_BUILD OR NOT EXISTS "${windows_utl}")
  message("skipped: no Windows build of utl (set UTIL_WINDOWS_BUILD_DIR)")
  return()
endif()
find_program(wine NAMES wine64 PATHS /usr/lib/wine NO_DEFAULT_PATH)
find_program(wine NAMES wine64)
if(NOT wine)
  message("skipped: wine64 not found")
  return()
endif()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

# Wine reads its arguments in the locale's character set; the names below are UTF-8. Output goes
# to files, never pipes: Wine's helper processes may keep inherited pipes open after utl ends.
set(wine_env
    WINEPREFIX=${WINDOWS_BUILD}/wineprefix WINEDEBUG=-all LANG=C.UTF-8 LC_ALL=C.UTF-8
    "WINEDLLOVERRIDES=winedbg.exe,winemenubuilder.exe=d")

# run(<label> linux|windows <args...>): runs utl, leaves its output in ${WORK_DIR}/<label>.out.
function(run label flavour)
  if(flavour STREQUAL "linux")
    set(command "${LINUX_UTL}")
  else()
    set(command ${CMAKE_COMMAND} -E env ${wine_env} "${wine}" "${windows_utl}")
  endif()
  execute_process(COMMAND ${command} ${ARGN}
                  INPUT_FILE /dev/null
                  OUTPUT_FILE "${WORK_DIR}/${label}.out"
                  ERROR_FILE "${WORK_DIR}/${label}.err"
                  RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    file(READ "${WORK_DIR}/${label}.err" errors)
    message(FATAL_ERROR "${label}: utl ${ARGN} failed (${result}): ${errors}")
  endif()
endfunction()

function(expect_same_files what a b)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${a}" "${b}" RESULT_VARIABLE different)
  if(different)
    file(READ "${a}" left HEX)
    file(READ "${b}" right HEX)
    message(FATAL_ERROR "${what} differ:\n${a}: ${left}\n${b}: ${right}")
  endif()
endfunction()

# A folder with backslashes and a Latin-1 letter; names with CJK characters and one outside the
# BMP. (No backslash at the end: CMake would read "\;" in the argument list as a plain ";".)
set(folder "C:\\Data\\café\\sub")
set(names "plain.txt" "中文.doc" "smile-😀.png" "x")

run(make_linux linux record-make "${WORK_DIR}/linux.rec" "${folder}" ${names})
run(make_windows windows record-make "${WORK_DIR}/windows.rec" "${folder}" ${names})
expect_same_files("the record files the two builds wrote" "${WORK_DIR}/linux.rec" "${WORK_DIR}/windows.rec")

# The surrogate pair of U+1F600 is in the file, big-endian.
file(READ "${WORK_DIR}/linux.rec" record HEX)
if(NOT record MATCHES "d83dde00")
  message(FATAL_ERROR "U+1F600 is not stored as the UTF-16 pair D83D DE00: ${record}")
endif()

run(dump_linux_own linux record-dump "${WORK_DIR}/linux.rec")
run(dump_linux_other linux record-dump "${WORK_DIR}/windows.rec")
run(dump_windows_own windows record-dump "${WORK_DIR}/windows.rec")
run(dump_windows_other windows record-dump "${WORK_DIR}/linux.rec")
expect_same_files("Linux dumps of the two files" "${WORK_DIR}/dump_linux_own.out" "${WORK_DIR}/dump_linux_other.out")
expect_same_files("Linux and Windows dumps" "${WORK_DIR}/dump_linux_own.out" "${WORK_DIR}/dump_windows_other.out")
expect_same_files("Windows dumps of the two files" "${WORK_DIR}/dump_windows_own.out" "${WORK_DIR}/dump_windows_other.out")

file(READ "${WORK_DIR}/dump_linux_own.out" dump)
string(FIND "${dump}" "smile-😀.png" found)
if(found EQUAL -1 OR NOT dump MATCHES "4 item\\(s\\)")
  message(FATAL_ERROR "the dump does not show the items written:\n${dump}")
endif()
message("record files agree between the builds:\n${dump}")
