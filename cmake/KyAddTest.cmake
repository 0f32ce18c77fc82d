# ky_add_test(NAME SOURCES file... [LINKS target...] [LABELS label...] [ISOLATED function...])
#
# A QtTest program, run offscreen. Each ISOLATED function also is a test of its own in a process of its
# own, and is left out of the common run: what it needs is to be the first, or the last, in a process.
function(ky_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;LABELS;ISOLATED")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} Qt6::Test ky_build_flags)
  set(tests ${name})
  add_test(NAME ${name} COMMAND ${name})
  foreach(function IN LISTS arg_ISOLATED)
    add_test(NAME ${name}.${function} COMMAND ${name} ${function})
    list(APPEND tests ${name}.${function})
  endforeach()
  list(JOIN arg_ISOLATED "," isolated)
  set_tests_properties(${tests} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Europe/Berlin"
    LABELS "${arg_LABELS}")
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Europe/Berlin;KY_TEST_SKIP=${isolated}")
endfunction()
