foreach(test tst_KyDICOMAccess tst_KyDICOMObjectInfo)
  ky_add_test(${test} SOURCES ${CMAKE_CURRENT_LIST_DIR}/${test}.cpp LINKS kybase kytestsupport)
endforeach()
