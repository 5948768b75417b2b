# finish.cmake: packs each package once more, by dpkg-deb. cpack's own call ldconfig in
# scripts, where a trigger is what Debian wants, don't say that libraries of several
# architectures go side by side, and hold the time of the day; dpkg-deb takes no file for
# younger than SOURCE_DATE_EPOCH.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/finish)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND ${CPACK_RTIFHAL_DPKG_DEB} --raw-extract ${package} ${tree}
    COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
  file(READ ${tree}/DEBIAN/control control)
  string(REGEX REPLACE "\n(Section: lib)" "\nMulti-Arch: same\n\\1" control "${control}")
  file(WRITE ${tree}/DEBIAN/control "${control}")
  execute_process(
    COMMAND ${CPACK_RTIFHAL_DPKG_DEB} --root-owner-group -Zxz --build ${tree} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
