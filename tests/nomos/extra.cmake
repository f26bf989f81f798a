# Without the module that knows ICU, Linux has Windows-1252 alone, from a table of its own: the tests
# of that page also run with a copy of the library that has no such module beside it.
if(NOT WIN32)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/without-icu)
  add_custom_command(TARGET nomos_tests POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:nomos>
      ${folder}/$<TARGET_SONAME_FILE_NAME:nomos>
    VERBATIM)
  nomutil_add_test(NAME nomos_without_icu
    COMMAND nomos_tests --gtest_filter=*Windows1252*)
  set_property(TEST nomos_without_icu PROPERTY ENVIRONMENT LD_LIBRARY_PATH=${folder})
endif()
