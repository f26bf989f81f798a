# The tests call the commands themselves; the program as a whole is run with two outcomes.
target_link_libraries(nomtool_tests PRIVATE nomtool_commands)
nomutil_add_test(NAME nomtool_prints COMMAND nomtool decimal -5 / 3)
set_tests_properties(nomtool_prints PROPERTIES
  PASS_REGULAR_EXPRESSION "^-1\\.66666666666666666666666[\r\n]+$")
nomutil_add_test(NAME nomtool_refuses COMMAND nomtool decimal 1 / 0)
set_tests_properties(nomtool_refuses PROPERTIES WILL_FAIL TRUE)

# A language without its message file is what the doctor complains of. Linux has a GEOS.
set(lost ${CMAKE_CURRENT_BINARY_DIR}/lostlanguage.ini)
file(WRITE ${lost} "[KoraClient]\nLanguage=xyz\n")
nomutil_add_test(NAME nomtool_doctor_complains COMMAND nomtool doctor)
set_property(TEST nomtool_doctor_complains APPEND PROPERTY ENVIRONMENT NOMUTIL_INI=${lost})
set_tests_properties(nomtool_doctor_complains PROPERTIES
  PASS_REGULAR_EXPRESSION "language xyz: file .*kormsgs.xyz is missing")
if(NOT WIN32)
  target_sources(nomtool_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/nomtool/geos/geometry_test.cpp)
endif()
