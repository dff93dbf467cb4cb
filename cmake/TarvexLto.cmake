# The module is optimised over all its sources when it is linked, since a frame passes through many small functions of
# several libraries. Those libraries hold ordinary code as well, which the programs of the tests take: linking each of
# them in this way would take minutes.
#
# tarvex_lto_library(target...)   what the module is made of
# tarvex_lto_program(target)      what is linked in this way
option(TARVEX_LTO "Optimise the module over all its sources" OFF)

function(tarvex_lto_library)
  if(TARVEX_LTO)
    foreach(target ${ARGN})
      target_compile_options(${target} PRIVATE -flto -ffat-lto-objects)
    endforeach()
  endif()
endfunction()

function(tarvex_lto_program target)
  set_target_properties(${target} PROPERTIES TARVEX_LTO_PROGRAM ON)
endfunction()

# One of the two: -fno-lto is not taken back by what follows it.
if(TARVEX_LTO)
  add_link_options($<IF:$<BOOL:$<TARGET_PROPERTY:TARVEX_LTO_PROGRAM>>,-flto=auto,-fno-lto>)
endif()
