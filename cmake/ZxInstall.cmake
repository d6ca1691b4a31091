# Installation, in components: runtime (programs and libraries), sdk (what plug-ins are built with) and plugins.
include(CMakePackageConfigHelpers)
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/zxalign)

foreach(name mc zx qx numbers)
  set_target_properties(host_${name} PROPERTIES EXPORT_NAME ${name})
endforeach()
foreach(name control sdk)
  set_target_properties(zxalign_${name} PROPERTIES EXPORT_NAME ${name})
endforeach()
set_target_properties(zxalign PROPERTIES EXPORT_NAME package)
set_target_properties(zxalign-cli PROPERTIES EXPORT_NAME program)
set_target_properties(orvel PROPERTIES EXPORT_NAME desktop)

install(TARGETS zxalign-cli orvel EXPORT zxalign RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES apps/orvel/share/orvel.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT runtime)
install(FILES host/qx/icons/orvel.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT runtime)
install(FILES LICENSE
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zxalign RENAME copyright COMPONENT runtime)
install(TARGETS host_mc host_zx host_qx zxalign EXPORT zxalign
  LIBRARY DESTINATION ${ZX_PACKAGE_DIR} COMPONENT runtime
  FILE_SET HEADERS DESTINATION ${ZX_HEADER_DIR} COMPONENT sdk)
install(TARGETS host_numbers zxalign_control zxalign_sdk EXPORT zxalign
  FILE_SET HEADERS DESTINATION ${ZX_HEADER_DIR} COMPONENT sdk)

install(EXPORT zxalign NAMESPACE zxalign:: FILE zxalignTargets.cmake DESTINATION ${config} COMPONENT sdk)
configure_package_config_file(cmake/zxalignConfig.cmake.in ${CMAKE_BINARY_DIR}/zxalignConfig.cmake
  INSTALL_DESTINATION ${config})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zxalignConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zxalignConfig.cmake ${CMAKE_BINARY_DIR}/zxalignConfigVersion.cmake
  DESTINATION ${config} COMPONENT sdk)
