# Man pages and shell completion.

# orvel_compressed(FILE COMPRESSED) compresses a file the way Debian's policy wants it.
function(orvel_compressed file compressed)
  find_program(ORVEL_GZIP gzip REQUIRED)
  mark_as_advanced(ORVEL_GZIP)
  execute_process(
    COMMAND ${ORVEL_GZIP} --best --no-name --stdout ${file}
    OUTPUT_FILE ${compressed}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# orvel_install_manual(PAGE COMPONENT) installs a page that stands in the current folder, beside its
# program, as PAGE.in; the project's version comes into it. A Debian package has it compressed.
function(orvel_install_manual page component)
  set(installed ${CMAKE_CURRENT_BINARY_DIR}/${page})
  configure_file(${page}.in ${installed} @ONLY)
  if(ORVEL_DEBIAN_PACKAGES)
    orvel_compressed(${installed} ${installed}.gz)
    string(APPEND installed .gz)
  endif()
  string(REGEX MATCH "[0-9]$" section ${page})
  install(
    FILES ${installed}
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
    COMPONENT ${component})
endfunction()

# orvel_install_completion(PROGRAM COMPONENT) installs what completes a program's command line. bash
# looks for it by the program's name; the file is the same for all.
function(orvel_install_completion program component)
  install(
    FILES ${PROJECT_SOURCE_DIR}/packaging/completion/orvel.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME ${program}
    COMPONENT ${component})
endfunction()
