# Installs the built library into a fresh prefix, then builds and runs the
# consumer against it, once through find_package and once through pkg-config.
# Inputs: BUILD_DIR, CONSUMER_DIR, WORK_DIR, CXX_COMPILER, CXX_FLAGS, GENERATOR.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${out}\n${err}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(required include/MiddlewareIpc.h include/tessarine/IpcServerManager.h
        include/middlewarefacade/VideoFacade.h include/ipcutil/Rectangle_t.h)
  if(NOT EXISTS ${prefix}/${required})
    message(FATAL_ERROR "not installed: ${required}")
  endif()
endforeach()
file(GLOB_RECURSE versioned ${prefix}/*/libtessarine.so.1)
if(NOT versioned)
  message(FATAL_ERROR "no versioned libtessarine.so.1 installed")
endif()

foreach(variant find_package pkg_config)
  set(build ${WORK_DIR}/${variant})
  # Under the temporary directory: a socket path must fit 107 characters,
  # however deep the build directory is.
  execute_process(COMMAND mktemp -d -t tessarine-consumer-XXXXXX
                  OUTPUT_VARIABLE sockets OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE made)
  if(NOT made EQUAL 0)
    message(FATAL_ERROR "cannot make a socket directory")
  endif()
  if(variant STREQUAL "pkg_config")
    file(GLOB_RECURSE pc_file ${prefix}/*/tessarine.pc)
    get_filename_component(pc_dir "${pc_file}" DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} ${pc_dir})
    set(use_pkg_config ON)
  else()
    unset(ENV{PKG_CONFIG_PATH})
    set(use_pkg_config OFF)
  endif()
  run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${build} -G ${GENERATOR}
      -DCMAKE_CXX_COMPILER=${CXX_COMPILER} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
      -DCMAKE_PREFIX_PATH=${prefix} -DUSE_PKG_CONFIG=${use_pkg_config})
  run(${CMAKE_COMMAND} --build ${build})
  run(${build}/consumer ${sockets})
  file(REMOVE_RECURSE ${sockets})
  message(STATUS "${variant}: consumer built and ran against the installed library")
endforeach()
file(REMOVE_RECURSE ${WORK_DIR})
