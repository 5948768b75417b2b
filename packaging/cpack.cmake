# cpack.cmake: Debian packages, one for each component. `./dev package` makes and tries them.
#
# debian/stage.cmake puts in what Debian wants of every package, debian/finish.cmake
# takes out what it doesn't want; debian/ has the texts.
find_program(RTIFHAL_DPKG_DEB dpkg-deb)
if(NOT RTIFHAL_DPKG_DEB)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME rtifhal)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "the rtifhal developers")
set(CPACK_PACKAGE_CONTACT "rtifhal developers <rtifhal@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/finish.cmake)
# Handed on to both.
set(CPACK_RTIFHAL_DEBIAN ${CMAKE_CURRENT_SOURCE_DIR}/debian)
set(CPACK_RTIFHAL_CHANGELOG ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
set(CPACK_RTIFHAL_DPKG_DEB ${RTIFHAL_DPKG_DEB})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development)
if(RTIFHAL_LAB)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE rtifhal)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# For rtif, whose package doesn't have it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME librtifhal-trident${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers ${CMAKE_CURRENT_SOURCE_DIR}/debian/shlibs
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/symbols)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"routed interfaces for a switch chip (shared library)
librtifhal_trident turns requests of a routed-interface layer into calls of
the SDK of a Trident or Trident2 switch chip and of the platform around it:
L3 interfaces, ingress objects, VLAN membership, flood lists, virtual MACs,
and a persistent record for the next restart.

It is a plain shared library with a C ABI. The process that loads it
provides the chip's SDK and the platform.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME librtifhal-trident-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${debian_version})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"routed interfaces for a switch chip (development files)
librtifhal_trident turns requests of a routed-interface layer into calls of
the SDK of a Trident or Trident2 switch chip and of the platform around it.

This package has its headers, those of the platform contract that a host
fulfils, and what CMake and pkg-config need to find them.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME rtif)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
# The command and the embedded switch in it use records of the library.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${debian_version})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"routed interfaces on an embedded switch, without hardware
rtif reads a switch's configuration, a config_db.json, and brings its routed
interfaces up by librtifhal_trident on an embedded switch: tables with the
sizes and refusals of a Trident or Trident2, a write queue, a persistent
store, and faults on demand.

It shows what the chip holds and every call that was made for it, takes
frames through the chip, rehearses restarts, and puts the chip's ports on
real network interfaces.")

include(CPack)
