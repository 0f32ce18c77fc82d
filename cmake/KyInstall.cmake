# The package: find_package(KyScript) and the targets KyScript::kyscript, KyScript::rnlib and so on.

install(EXPORT KyScriptTargets NAMESPACE KyScript:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KyScript)
configure_package_config_file(${CMAKE_CURRENT_SOURCE_DIR}/cmake/KyScriptConfig.cmake.in
  ${CMAKE_BINARY_DIR}/KyScriptConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KyScript)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KyScriptConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KyScriptConfig.cmake ${CMAKE_BINARY_DIR}/KyScriptConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KyScript)

# The declarations of what scripts see: a package, for editors and for TypeScript's compiler.
install(DIRECTORY docs/scripting/types/kyscript DESTINATION ${CMAKE_INSTALL_DATADIR}/kyscript/types)
