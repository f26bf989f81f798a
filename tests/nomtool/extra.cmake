# The tests call the commands themselves; the program as a whole is run with two outcomes.
target_link_libraries(nomtool_tests PRIVATE nomtool_commands)
nomutil_add_test(NAME nomtool_prints COMMAND nomtool decimal -5 / 3)
set_tests_properties(nomtool_prints PROPERTIES
  PASS_REGULAR_EXPRESSION "^-1\\.66666666666666666666666[\r\n]+$")
nomutil_add_test(NAME nomtool_refuses COMMAND nomtool decimal 1 / 0)
set_tests_properties(nomtool_refuses PROPERTIES WILL_FAIL TRUE)
