# Warnings and sanitizers, the same for every target of the project.

add_library(ky_build_flags INTERFACE)
target_compile_options(ky_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
  $<$<BOOL:${KY_WARNINGS_AS_ERRORS}>:-Werror>)
if(KY_SANITIZE)
  target_compile_options(ky_build_flags INTERFACE -fsanitize=${KY_SANITIZE} -fno-omit-frame-pointer
                         -fno-sanitize-recover=undefined)
  target_link_options(ky_build_flags INTERFACE -fsanitize=${KY_SANITIZE})
endif()

find_program(KY_CCACHE ccache)
if(KY_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KY_CCACHE})
endif()

# Some eighty test programs link the same objects: mold takes a tenth of the time of the usual linker.
find_program(KY_MOLD mold)
if(KY_MOLD AND KY_BUILD_TESTS)
  add_link_options(-fuse-ld=mold)
endif()

# For what ships, not for tests: every text says in which encoding it is read.
add_library(ky_code_flags INTERFACE)
target_link_libraries(ky_code_flags INTERFACE ky_build_flags)
target_compile_definitions(ky_code_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_DEPRECATED_WARNINGS)
