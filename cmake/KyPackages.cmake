# Debian packages: `cpack` in a build folder, or scripts/package.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kyscript)
set(CPACK_PACKAGE_VENDOR kyscript)
set(CPACK_PACKAGE_CONTACT "The kyscript authors <kyscript@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libraries development hosts documentation)
if(TARGET ovbrowser)
  list(APPEND CPACK_COMPONENTS_ALL web)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(soname libkyscript${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${soname})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_GENERATE_SHLIBS ON)
# Found at run time by name, so that no library of them is linked.
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_RECOMMENDS "libqt6sql6-sqlite, libqt6svg6")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SUGGESTS "libqt6sql6-psql")
set(CPACK_COMPONENT_LIBRARIES_DESCRIPTION
  "Scripts in a client workstation: the libraries\nThe module that embeds the script engine, and its platform.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkyscript-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qt6-base-dev, qt6-declarative-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS libraries)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Scripts in a client workstation: development files\nHeaders, and the packages for CMake and pkg-config.")

set(CPACK_DEBIAN_HOSTS_PACKAGE_NAME kyscript)
set(CPACK_DEBIAN_HOSTS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_HOSTS_PACKAGE_SUGGESTS "kyscript-doc, kyscript-web")
set(CPACK_COMPONENT_HOSTS_DEPENDS libraries)
set(CPACK_COMPONENT_HOSTS_DESCRIPTION
  "Scripts in a client workstation: programs\nThe command line runner kyrun and the workstation kyworkstation.")

# Apart from the programs: Qt WebEngine is heavier than all of them.
set(CPACK_DEBIAN_WEB_PACKAGE_NAME kyscript-web)
set(CPACK_DEBIAN_WEB_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_WEB_DEPENDS libraries)
set(CPACK_COMPONENT_WEB_DESCRIPTION
  "Scripts in a client workstation: web pages\nThe browser ovbrowser, and web pages in windows of kyworkstation.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME kyscript-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION
  "Scripts in a client workstation: documentation\nThe guide for script authors, declarations for editors, examples.")

set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/packages)
include(CPack)
