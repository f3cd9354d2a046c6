# How tests are built: often compiled and briefly run, so not optimised, and with the headers that all of them share
# compiled once.
find_package(GTest REQUIRED)
include(GoogleTest)

# One kind of position independence for programs and libraries alike, or they could not share those headers.
set(CMAKE_POSITION_INDEPENDENT_CODE OFF)
add_compile_options(-O0 -U_FORTIFY_SOURCE -fPIC)
add_compile_options($<$<CXX_COMPILER_ID:Clang>:-Wno-reserved-identifier>)  # The C library's own are stood in for.
if(ZORBALT_SANITIZE)
  # What is tested has it; the tests' own code would take half as long again to compile.
  add_compile_options(-fno-sanitize=undefined)
else()
  add_compile_options(-g0)
endif()

add_library(test_headers OBJECT "${PROJECT_SOURCE_DIR}/tests/support/test_headers.cpp")
target_link_libraries(test_headers PRIVATE GTest::gmock)
target_precompile_headers(test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <filesystem> <fstream> <functional> <map> <memory> <string> <vector>)

# Every test belongs to a run, which has a directory for temporary files of its own and has to leave nothing behind.
string(MD5 run_mark "${CMAKE_BINARY_DIR}")
string(SUBSTRING "${run_mark}" 0 8 run_mark)
set(ZORBALT_TEST_FOLDER "/tmp/zorbalt_tests_${run_mark}")
# What the address sanitizer keeps of freed memory is copied by every fork; a little finds the same.
set(ZORBALT_TEST_ENVIRONMENT "TMPDIR=set:${ZORBALT_TEST_FOLDER}" "ASAN_OPTIONS=set:quarantine_size_mb=8"
    CACHE INTERNAL "For fuzz/ and bench/ as well")

# join_test_run(TEST...): for tests that are programs of another kind.
function(join_test_run)
  foreach(test IN LISTS ARGN)
    set_property(TEST ${test} APPEND PROPERTY FIXTURES_REQUIRED test_run)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT_MODIFICATION ${ZORBALT_TEST_ENVIRONMENT})
  endforeach()
endfunction()

# add_test_program(NAME SOURCE... [FILTER FILTER]): a program of tests, which ctest knows one by one.
function(add_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FILTER" "")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE test_support GTest::gmock)
  target_precompile_headers(${name} REUSE_FROM test_headers)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 NO_PRETTY_VALUES TEST_FILTER "${arg_FILTER}" PROPERTIES
    FIXTURES_REQUIRED test_run ENVIRONMENT_MODIFICATION "${ZORBALT_TEST_ENVIRONMENT}")
endfunction()

# add_room_test(NAME SOURCE...): the same with GoogleTest's own main.
function(add_room_test name)
  add_test_program(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
endfunction()

# add_module_test(NAME SOURCE...): of the module's parts, with the library files that they load.
function(add_module_test name)
  add_test_program(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE module_support)
  set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON)
  foreach(missing IN ITEMS nothing CreateLibIF DeleteLibIF CreateItemDisp DeleteItemDisp)
    add_dependencies(${name} library_without_${missing})
  endforeach()
  add_dependencies(${name} vdkcli)
endfunction()

# add_stand_in(NAME PROGRAM FOLDER SOURCE...): a program that stands in for somebody else's and is started by the
# thousand: without sanitizers, linked to start quickly.
function(add_stand_in name program folder)
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME ${program} RUNTIME_OUTPUT_DIRECTORY "${folder}")
  target_compile_options(${name} PRIVATE -O2)
  if(ZORBALT_SANITIZE)
    target_compile_options(${name} PRIVATE -fno-sanitize=all)
    target_link_options(${name} PRIVATE -fno-sanitize=all)
  endif()
  link_statically(${name})
endfunction()
