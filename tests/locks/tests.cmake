# The Linux fault tests reach the substitutes' system-call table (platform/linux/system_calls.h).
target_include_directories(locks_test PRIVATE ${CMAKE_SOURCE_DIR})
util_add_gtest(locks locks_test)
