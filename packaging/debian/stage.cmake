# stage.cmake: what Debian wants of a package beyond the files that are installed
# anywhere. cpack runs it when the components stand in their folders.

# gzip_at(<file>...): in place, and the same bytes whenever it is done.
function(gzip_at)
  execute_process(COMMAND gzip -9nf ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} COMPONENT)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})

  file(COPY ${CPACK_RTIFHAL_DEBIAN}/copyright DESTINATION ${documents}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  configure_file(${CPACK_RTIFHAL_DEBIAN}/changelog ${documents}/changelog.Debian COPYONLY)
  configure_file(${CPACK_RTIFHAL_CHANGELOG} ${documents}/changelog COPYONLY)
  file(CHMOD ${documents}/changelog.Debian ${documents}/changelog
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  file(GLOB pages ${root}/share/man/man*/*)
  gzip_at(${documents}/changelog.Debian ${documents}/changelog ${pages})

  # Debian's zsh doesn't look into /usr/share/zsh/site-functions.
  if(EXISTS ${root}/share/zsh/site-functions)
    file(RENAME ${root}/share/zsh/site-functions ${root}/share/zsh/vendor-completions)
  endif()

  # The loader knows /usr.
  file(GLOB programs ${root}/bin/*)
  foreach(program IN LISTS programs)
    file(RPATH_REMOVE FILE ${program})
  endforeach()
endforeach()
