# ky_add_test(NAME SOURCES file... [LINKS target...] [LABELS label...] [ISOLATED function...]
#             [GC] [GC_SKIPS function...])
#
# A QtTest program, run offscreen. Each ISOLATED function also is a test of its own in a process of its
# own, and is left out of the common run: what it needs is to be the first, or the last, in a process.
#
# With GC each of these tests is there a second time, as NAME.gc and NAME.FUNCTION.gc with the label gc and
# without the others: the garbage collector of scripts then runs at every allocation. GC_SKIPS are left out of
# it: what allocates too much for that.
function(ky_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "GC" "" "SOURCES;LINKS;LABELS;ISOLATED;GC_SKIPS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} Qt6::Test ky_build_flags)
  ky_add_test_runs(${name} "" "${arg_LABELS}" "" "${arg_ISOLATED}" "${arg_ISOLATED}")
  if(arg_GC)
    set(isolated ${arg_ISOLATED})
    list(REMOVE_ITEM isolated ${arg_GC_SKIPS})
    ky_add_test_runs(${name} ".gc" "gc" "QV4_MM_AGGRESSIVE_GC=1" "${isolated}" "${arg_ISOLATED};${arg_GC_SKIPS}")
  endif()
endfunction()

# The common run of a test program, which leaves out SKIPPED, and one for each of ISOLATED.
function(ky_add_test_runs name suffix labels environment isolated skipped)
  set(environment "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Europe/Berlin;${environment}")
  add_test(NAME ${name}${suffix} COMMAND ${name})
  set(tests ${name}${suffix})
  foreach(function IN LISTS isolated)
    add_test(NAME ${name}.${function}${suffix} COMMAND ${name} ${function})
    list(APPEND tests ${name}.${function}${suffix})
  endforeach()
  set_tests_properties(${tests} PROPERTIES ENVIRONMENT "${environment}" LABELS "${labels}")
  list(JOIN skipped "," skipped)
  set_tests_properties(${name}${suffix} PROPERTIES ENVIRONMENT "${environment};KY_TEST_SKIP=${skipped}")
endfunction()
