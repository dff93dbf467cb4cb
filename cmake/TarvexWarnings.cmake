# One set of warnings for every target of this tree, and each of them an error. Third-party headers
# are reached as system headers and are not judged.
if(MSVC)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:/W4> $<$<COMPILE_LANGUAGE:CXX>:/WX>)
  return()
endif()
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wall>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wextra>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wpedantic>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wshadow>
                    $<$<COMPILE_LANGUAGE:CXX>:-Werror>)
