# Called by cpack when it has made a zip: makes it again with the files in the order of their names.
# By itself it takes them as the file system lists them, which differs from machine to machine.
get_filename_component(above ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY)
file(GLOB_RECURSE files RELATIVE ${above} ${CPACK_TEMPORARY_DIRECTORY}/*)
list(JOIN files "\n" list)
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}.files "${list}\n")
file(REMOVE ${CPACK_PACKAGE_FILES})
execute_process(COMMAND ${CMAKE_COMMAND} -E tar c ${CPACK_PACKAGE_FILES} --format=zip
    --files-from=${CPACK_TEMPORARY_DIRECTORY}.files
  WORKING_DIRECTORY ${above} COMMAND_ERROR_IS_FATAL ANY)
