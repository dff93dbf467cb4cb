# Registration of test programs: one GoogleTest executable per folder below tests/.
enable_testing()
# What ./test builds of a preset where it runs nothing but tests.
add_custom_target(tarvex_tests)

# tarvex_add_test(name SOURCES a.cpp ... [LIBS lib ...] [WINDOWS] [TSAN] [ALONE] [TIMEOUT seconds])
#   WINDOWS   also built for Windows and run under Wine; without it the name does not exist there
#   TSAN      part of the ThreadSanitizer run of ./test (framework, pins_output and filter always are)
#   ALONE     in ./test no other program of its build runs beside it: it measures the whole process or the
#             machine, changes the registry, or shows windows
#   TIMEOUT   for the whole executable, default 300 seconds
# The executable is <build>/tests/<name>[.exe]. GoogleTest with its main function and tests/support are linked
# in. Each executable is one CTest test; ./test runs the executables itself and counts their cases.
function(tarvex_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WINDOWS;TSAN;ALONE" "TIMEOUT" "SOURCES;LIBS")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tarvex_add_test(${name}): what is ${arg_UNPARSED_ARGUMENTS}?")
  endif()
  if(WIN32 AND NOT arg_WINDOWS)
    return()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  set(keywords "")
  if(arg_TSAN OR name MATCHES "^(framework|pins_output|filter)(_test|_tests)?$")
    string(APPEND keywords " tsan")
  endif()
  if(arg_ALONE)
    string(APPEND keywords " alone")
  endif()
  add_executable(${name} ${arg_SOURCES})
  if(TARVEX_PRESET STREQUAL "native-tsan" AND NOT keywords MATCHES tsan)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL TRUE)  # nobody runs it there
  else()
    add_dependencies(tarvex_tests ${name})
  endif()
  target_compile_options(${name} PRIVATE ${TARVEX_TEST_OPTIONS})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} tarvex_test_support tarvex::gtest)
  tarvex_precompile(tests ${name})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  # How ./test learns of it: name, time limit, keywords.
  file(WRITE ${CMAKE_BINARY_DIR}/tests/${name}.test
       "${name}${CMAKE_EXECUTABLE_SUFFIX} ${arg_TIMEOUT}${keywords}\n")
endfunction()

# Wine shows the whole file system as drive Z. On Windows itself a path has its drive already.
if(WIN32 AND CMAKE_CROSSCOMPILING)
  set(TARVEX_TEST_DRIVE "Z:")
endif()

# A test that was taken out must not stay on the list.
file(GLOB stale ${CMAKE_BINARY_DIR}/tests/*.test)
if(stale)
  file(REMOVE ${stale})
endif()
