# Patches, builds and installs libebml and libmatroska from unpacked sources, on whatever system this is:
#   cmake -DLIBEBML=FOLDER -DLIBMATROSKA=FOLDER -DPREFIX=FOLDER [-DARGUMENTS=-G;Ninja;...] -P third_party/build.cmake
# PREFIX is where CMAKE_PREFIX_PATH has to point afterwards; ARGUMENTS go to the configuration of both. Takes
# git, for its patch program. The given folders stay as they are. On Debian cmake/deps.sh does this by itself.
foreach(name LIBEBML LIBMATROSKA PREFIX)
  if(NOT ${name})
    message(FATAL_ERROR "${name} is not given")
  endif()
  get_filename_component(${name} ${${name}} ABSOLUTE)
endforeach()

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# GIT_CEILING_DIRECTORIES: the copy is no part of the repository that it may lie in.
function(patched_copy name source)
  file(GLOB patches ${CMAKE_CURRENT_LIST_DIR}/patches/${name}/*.patch)
  list(SORT patches)
  file(COPY ${source}/ DESTINATION ${PREFIX}/source/${name})
  foreach(patch ${patches})
    execute_process(COMMAND ${CMAKE_COMMAND} -E env GIT_CEILING_DIRECTORIES=${PREFIX}/source
                            git apply --ignore-whitespace ${patch}
                    WORKING_DIRECTORY ${PREFIX}/source/${name} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

function(build name)
  set(folder ${PREFIX}/source/build-${name})
  run(${CMAKE_COMMAND} -S ${PREFIX}/source/${name} -B ${folder} -DCMAKE_INSTALL_PREFIX=${PREFIX}
      -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DDISABLE_PKGCONFIG=ON
      -DCMAKE_MSVC_RUNTIME_LIBRARY=MultiThreaded ${ARGUMENTS} ${ARGN})
  run(${CMAKE_COMMAND} --build ${folder} --config Release --target install)
endfunction()

file(REMOVE_RECURSE ${PREFIX}/source)
patched_copy(libebml ${LIBEBML})
patched_copy(libmatroska ${LIBMATROSKA})
build(libebml)
build(libmatroska -DEBML_DIR=${PREFIX}/lib/cmake/EBML -DCMAKE_FIND_ROOT_PATH=${PREFIX})
file(REMOVE_RECURSE ${PREFIX}/source)
