# tessarine_layer(<target> HEADERS <path>... [LINKS <target>...])
#
# Makes <target> one layer of the library: it sees exactly the headers listed
# (files or folders, relative to the source tree; a leading include/ is
# dropped, so that they are included as "tessarine/...", "hub/...") and,
# through LINKS, those of the layers below it. Each layer reaches its headers
# through a tree of links of its own, so an include of a header of a higher
# layer is not found and the build fails.
function(tessarine_layer target)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINKS" ${ARGN})
  set(root ${PROJECT_BINARY_DIR}/layers/${target})
  file(REMOVE_RECURSE ${root})
  foreach(path IN LISTS ARG_HEADERS)
    if(NOT EXISTS ${PROJECT_SOURCE_DIR}/${path})
      message(FATAL_ERROR "${target}: no header or folder ${path}")
    endif()
    string(REGEX REPLACE "^include/" "" name ${path})
    get_filename_component(parent ${root}/${name} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${path} ${root}/${name} SYMBOLIC)
  endforeach()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE ${root})
    target_link_libraries(${target} INTERFACE ${ARG_LINKS})
  else()
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PUBLIC ${ARG_LINKS})
  endif()
endfunction()
