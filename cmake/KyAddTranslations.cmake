# ky_add_translations(TARGET LANGUAGES language...)
#
# Compiles translations/kyscript_LANGUAGE.ts into the target's resources, as ":/translations/kyscript_LANGUAGE.qm".
# Without Qt's lrelease there are none, and the target speaks English.
find_program(KY_LRELEASE lrelease HINTS ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS} DOC "Compiles translations")

function(ky_add_translations target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LANGUAGES")
  if(NOT KY_LRELEASE)
    message(STATUS "No lrelease (Debian: qt6-l10n-tools): ${target} speaks English only")
    return()
  endif()
  set(compiled "")
  foreach(language IN LISTS arg_LANGUAGES)
    set(source ${PROJECT_SOURCE_DIR}/translations/kyscript_${language}.ts)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/translations/kyscript_${language}.qm)
    add_custom_command(OUTPUT ${file} DEPENDS ${source}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/translations
      COMMAND ${KY_LRELEASE} -silent ${source} -qm ${file} VERBATIM)
    list(APPEND compiled ${file})
  endforeach()
  set_source_files_properties(${compiled} PROPERTIES GENERATED TRUE)
  qt_add_resources(${target} translations PREFIX / BASE ${CMAKE_CURRENT_BINARY_DIR} FILES ${compiled})
endfunction()
