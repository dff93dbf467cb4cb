# Headers of other people and of the platform take most of the time that a source of ours compiles. Targets
# of one kind share one precompiled header, which makes that three times shorter.
#
# tarvex_precompile(KIND target...)
#   KIND is product, host or tests; the headers are in cmake/precompiled/KIND.h.
# A source that lacks an #include compiles nevertheless. So ./bench and the fuzzers build without
# (CMAKE_DISABLE_PRECOMPILE_HEADERS).
if(NOT MSVC)
  set(TARVEX_TEST_OPTIONS -O1 -g1)  # compiled in half the time; the tests' own speed matters less
endif()

file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "")

# The owner of a kind's header must have the options and the definitions that its users have.
function(tarvex_precompiled_owner kind)
  add_library(tarvex_precompiled_${kind} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/precompiled.cpp)
  target_precompile_headers(tarvex_precompiled_${kind} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/precompiled/${kind}.h)
  target_link_libraries(tarvex_precompiled_${kind} PRIVATE ${ARGN})
endfunction()

function(tarvex_precompile kind)
  if(NOT TARGET tarvex_precompiled_${kind})
    message(FATAL_ERROR "tarvex_precompile: there is no kind ${kind}")
  endif()
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM tarvex_precompiled_${kind})
  endforeach()
endfunction()
