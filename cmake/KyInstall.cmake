# The package: find_package(KyScript) with the targets KyScript::kyscript, KyScript::rnlib and so on, each also a component;
# pkg-config's kyscript; the documentation; and the Debian packages that cpack makes of all.

get_property(libraries GLOBAL PROPERTY KY_INSTALLED_LIBRARIES)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/KyScript)
install(EXPORT KyScriptTargets NAMESPACE KyScript:: DESTINATION ${package} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_SOURCE_DIR}/cmake/KyScriptConfig.cmake.in
  ${CMAKE_BINARY_DIR}/KyScriptConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KyScriptConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KyScriptConfig.cmake ${CMAKE_BINARY_DIR}/KyScriptConfigVersion.cmake
  DESTINATION ${package} COMPONENT development)

list(TRANSFORM libraries PREPEND "-l" OUTPUT_VARIABLE linked)
list(JOIN linked " " linked)
configure_file(cmake/kyscript.pc.in ${CMAKE_BINARY_DIR}/kyscript.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/kyscript.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The declarations of what scripts see: a package, for editors and for TypeScript's compiler.
install(DIRECTORY docs/scripting/types/kyscript DESTINATION ${CMAKE_INSTALL_DATADIR}/kyscript/types
  COMPONENT documentation)
# As in the sources, so that the links between them hold.
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY examples/scripts examples/tools examples/report-form examples/typescript DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
  COMPONENT documentation)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

include(KyPackages)
