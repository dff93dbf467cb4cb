# The libraries that the module is made of are compiled as one source each, since a frame passes through many small
# functions: the compiler sees more of them at once, and may spend more on them than on other code (-O3). It also takes a
# third of the time. The compiler for Windows cannot optimise over all libraries when it links (-flto) and write debug
# information as well.
#
# tarvex_as_one(target...)
# A source that lacks an #include compiles nevertheless; the native presets compile each source alone.
option(TARVEX_UNITY "Compile each library of the module as one source" OFF)

function(tarvex_as_one)
  foreach(target ${ARGN})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${TARVEX_UNITY} UNITY_BUILD_BATCH_SIZE 0)
    if(TARVEX_UNITY AND NOT MSVC)
      target_compile_options(${target} PRIVATE -O3)
    endif()
  endforeach()
endfunction()
