# ky_add_library(NAME SOURCES file... [HEADERS file...] [LINKS target...] [PRIVATE_LINKS target...])
#
# A shared library of the platform: checks its layer, links, installs. Headers are included as
# <NAME/Header.h> in the tree and in the installation.
function(ky_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS")
  ky_check_layers(${name} ${arg_LINKS} ${arg_PRIVATE_LINKS})
  add_library(${name} SHARED ${arg_SOURCES} ${arg_HEADERS})
  add_library(KyScript::${name} ALIAS ${name})
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR PARENT_PATH root)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${root}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kyscript>)
  target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE ${arg_PRIVATE_LINKS} $<BUILD_INTERFACE:ky_code_flags>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  ky_install_library(${name})
  foreach(header IN LISTS arg_HEADERS)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kyscript/${name} COMPONENT development)
  endforeach()
endfunction()

# The library itself for those who run programs, the name to link with for those who build them.
function(ky_install_library name)
  set_property(GLOBAL APPEND PROPERTY KY_INSTALLED_LIBRARIES ${name})
  install(TARGETS ${name} EXPORT KyScriptTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libraries)
endfunction()
