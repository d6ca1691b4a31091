# The Debian package: both programs with their libraries, and the plug-ins where they are built.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zxalign)
set(CPACK_PACKAGE_VENDOR "the zxalign authors")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "alignment of the slices of image stacks")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime)
if(ZX_BUILD_PLUGINS)
  list(APPEND CPACK_COMPONENTS_ALL plugins)
endif()

# One package of all these components.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_VENDOR})
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Finds for every slice of an image stack the rigid transform that puts it back
onto its neighbour, and writes the aligned volume. The program orvel shows and
edits stacks in a window and runs Tcl scripts; the program zxalign aligns from
the command line.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where the libraries of the package are that its programs are linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# Text in windows and pictures needs a font, which no library asks for.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland")
include(CPack)
