# Registration of test programs: one GoogleTest executable per folder below tests/.
enable_testing()

# tarvex_add_test(name SOURCES a.cpp ... [LIBS lib ...] [WINDOWS] [TSAN] [TIMEOUT seconds])
#   WINDOWS   also built for Windows and run under Wine; without it the name does not exist there
#   TSAN      part of the ThreadSanitizer run of ./test (framework, pins_output and filter always are)
#   TIMEOUT   for the whole executable, default 300 seconds
# The executable is <build>/tests/<name>[.exe]. GoogleTest with its main function is linked in, and
# TARVEX_SOURCE_DIR names the checkout, in a form that the program's own system understands. Each
# executable is one CTest test; ./test runs the executables itself and counts their cases.
function(tarvex_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WINDOWS;TSAN" "TIMEOUT" "SOURCES;LIBS")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tarvex_add_test(${name}): what is ${arg_UNPARSED_ARGUMENTS}?")
  endif()
  if(WIN32 AND NOT arg_WINDOWS)
    return()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  if(arg_TSAN OR name MATCHES "^(framework|pins_output|filter)(_test|_tests)?$")
    set(keyword tsan)
  else()
    set(keyword -)
  endif()
  add_executable(${name} ${arg_SOURCES})
  if(TARVEX_PRESET STREQUAL "native-tsan" AND keyword STREQUAL "-")
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL TRUE)  # nobody runs it there
  endif()
  # Compiled in half the time; the tests' own speed matters less.
  if(NOT MSVC)
    target_compile_options(${name} PRIVATE -O1 -g1)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBS} tarvex::gtest)
  target_compile_definitions(${name} PRIVATE TARVEX_SOURCE_DIR="${TARVEX_SOURCE_DIR_FOR_TESTS}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  # How ./test learns of it: name, time limit, keyword.
  file(WRITE ${CMAKE_BINARY_DIR}/tests/${name}.test
       "${name}${CMAKE_EXECUTABLE_SUFFIX} ${arg_TIMEOUT} ${keyword}\n")
endfunction()

# Wine shows the whole file system as drive Z. On Windows itself a path has its drive already.
if(WIN32 AND CMAKE_CROSSCOMPILING)
  set(TARVEX_TEST_DRIVE "Z:")
endif()
set(TARVEX_SOURCE_DIR_FOR_TESTS "${TARVEX_TEST_DRIVE}${CMAKE_SOURCE_DIR}")

# A test that was taken out must not stay on the list.
file(GLOB stale ${CMAKE_BINARY_DIR}/tests/*.test)
if(stale)
  file(REMOVE ${stale})
endif()
