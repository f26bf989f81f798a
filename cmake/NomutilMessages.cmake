# What the build makes from the list of statuses in include/sys/messages.h besides C++: the English
# message file, the page docs/statuses.md for comparison, and the Windows message-table resource.

set(NOMUTIL_MESSAGE_LIST ${PROJECT_SOURCE_DIR}/include/sys/messages.h)
set(NOMUTIL_MESSAGE_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/GenerateMessages.cmake)

# nomutil_generate_messages(FORM OUTPUT): a build rule that writes one form of the list.
function(nomutil_generate_messages form output)
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -DLIST=${NOMUTIL_MESSAGE_LIST} -DFORM=${form} -DOUTPUT=${output}
      -P ${NOMUTIL_MESSAGE_SCRIPT}
    DEPENDS ${NOMUTIL_MESSAGE_LIST} ${NOMUTIL_MESSAGE_SCRIPT}
    COMMENT "Making ${form} from the list of statuses"
    VERBATIM)
endfunction()

# nomutil_message_files(): the message file, where the installation directory of the build tree
# and of the installed tree is, and the page.
function(nomutil_message_files)
  if(WIN32)
    set(build_folder ${PROJECT_BINARY_DIR}/bin)
    set(install_folder ${CMAKE_INSTALL_BINDIR})
  else()
    set(build_folder ${PROJECT_BINARY_DIR}/share/nomutil)
    set(install_folder ${CMAKE_INSTALL_DATADIR}/nomutil)
  endif()
  set(file ${build_folder}/kormsgs.eng)
  set(page ${CMAKE_CURRENT_BINARY_DIR}/statuses.md)
  nomutil_generate_messages(kormsgs.eng ${file})
  nomutil_generate_messages(statuses.md ${page})
  add_custom_target(nomutil_message_files ALL DEPENDS ${file} ${page})
  install(FILES ${file} DESTINATION ${install_folder} COMPONENT runtime)

  # After a change of the list, copy the page over the one in docs/.
  if(NOMUTIL_BUILD_TESTS)
    enable_testing()
    add_test(NAME statuses-page COMMAND ${CMAKE_COMMAND} -E compare_files
      ${PROJECT_SOURCE_DIR}/docs/statuses.md ${page})
  endif()
endfunction()

# nomutil_message_resource(): on Windows, the OBJECT library nomutil_message_resource with the
# message table; it goes into the module that contains nomutil_messages. -c sets the customer bit
# of the identifiers, -n ends texts without a line end.
function(nomutil_message_resource)
  if(NOT WIN32)
    return()
  endif()
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/message-resource)
  file(MAKE_DIRECTORY ${folder})
  nomutil_generate_messages(messages.mc ${folder}/messages.mc)
  add_custom_command(OUTPUT ${folder}/messages.rc ${folder}/MSG00409.bin
    COMMAND ${NOMUTIL_WINDMC} -c -n -h ${folder} -r ${folder} ${folder}/messages.mc
    DEPENDS ${folder}/messages.mc
    COMMENT "Compiling the message table"
    VERBATIM)
  add_library(nomutil_message_resource OBJECT ${folder}/messages.rc)
  target_include_directories(nomutil_message_resource PRIVATE ${folder})
  set_source_files_properties(${folder}/messages.rc PROPERTIES
    OBJECT_DEPENDS ${folder}/MSG00409.bin)
endfunction()
