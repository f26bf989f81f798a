# On Windows the message table goes into every module that holds the family's objects. The French
# test is a process of its own, because a process reads its environment once.
if(WIN32)
  target_sources(messages_tests PRIVATE $<TARGET_OBJECTS:nomutil_message_resource>)
endif()
add_dependencies(messages_tests nomutil_message_files)

set(folder ${CMAKE_CURRENT_SOURCE_DIR}/messages/french)
add_executable(messages_french_tests ${folder}/french_test.cpp)
target_link_libraries(messages_french_tests PRIVATE nomutil_flags nomutil nomutil_gtest)
target_compile_definitions(messages_french_tests PRIVATE
  "NOMUTIL_SOURCE_DIR=\"${PROJECT_SOURCE_DIR}\"")
nomutil_add_test(NAME messages_french_tests COMMAND messages_french_tests)
set_property(TEST messages_french_tests APPEND PROPERTY ENVIRONMENT
  "NOMUTIL_INI=${folder}/nomutil.ini" "KORALANGDIR=${folder}")
