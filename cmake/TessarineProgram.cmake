# Installs one of the project's programs as a package would: it finds the
# project's libraries without LD_LIBRARY_PATH, and its manual page (made from
# its own --help by help2man, when that is present) goes beside it.
find_program(HELP2MAN help2man)

function(tessarine_install_program target description)
  file(RELATIVE_PATH bin_to_lib "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  target_compile_definitions(${target} PRIVATE TESSARINE_VERSION="${PROJECT_VERSION}")
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(NOT HELP2MAN)
    return()
  endif()
  set(page ${CMAKE_CURRENT_BINARY_DIR}/${target}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${HELP2MAN} --no-info --no-discard-stderr --name "${description}" --output ${page} $<TARGET_FILE:${target}>
    DEPENDS ${target}
    COMMENT "Manual page of ${target}")
  add_custom_target(${target}-man ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()
