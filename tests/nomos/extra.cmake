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

# Event again, with a script in place of the system's wait on a word.
add_executable(nomos_event_steps ${CMAKE_CURRENT_SOURCE_DIR}/nomos/steps/event.cpp
  ${PROJECT_SOURCE_DIR}/nomos/source/common/event.cpp
  ${PROJECT_SOURCE_DIR}/nomos/source/common/relativetime.cpp)
target_compile_definitions(nomos_event_steps PRIVATE NOMOS_BUILDING)
target_compile_options(nomos_event_steps PRIVATE
  "SHELL:-iquote ${PROJECT_SOURCE_DIR}/nomos/source"
  "SHELL:-iquote ${PROJECT_SOURCE_DIR}/nomos/include")
target_link_libraries(nomos_event_steps PRIVATE nomutil_flags nomutil_gtest)
nomutil_discover_tests(nomos_event_steps)

# The heap of Linux again, over a C library that keeps account.
if(NOT WIN32)
  add_executable(nomos_heap_steps ${CMAKE_CURRENT_SOURCE_DIR}/nomos/steps/heap.cpp
    ${PROJECT_SOURCE_DIR}/nomos/source/linux/heap.cpp)
  target_compile_options(nomos_heap_steps PRIVATE -UNOMOS_KEEPS_BLOCKS
    "SHELL:-iquote ${CMAKE_CURRENT_SOURCE_DIR}"
    "SHELL:-iquote ${PROJECT_SOURCE_DIR}/nomos/source"
    "SHELL:-iquote ${PROJECT_SOURCE_DIR}/nomos/include")
  target_link_libraries(nomos_heap_steps PRIVATE nomutil_flags nomutil_gtest)
  target_link_options(nomos_heap_steps PRIVATE LINKER:--wrap=malloc,--wrap=free,--wrap=pthread_setspecific)
  nomutil_discover_tests(nomos_heap_steps threads)
endif()

# A library to load at run time. Tests copy it to the names that a library may have, the ones that
# count less first.
add_library(nomos_counter MODULE ${CMAKE_CURRENT_SOURCE_DIR}/nomos/library/counter.cpp)
target_link_libraries(nomos_counter PRIVATE nomutil_flags)
set_target_properties(nomos_counter PROPERTIES CXX_VISIBILITY_PRESET default)
add_dependencies(nomos_tests nomos_counter)
if(WIN32)
  # Not zlib1.dll: Wine has one of its own, which it prefers.
  set(names geos_c=libgeos_c-1.dll geos_c=geos_c.dll
    counter=libcounter.dll counter=counter.dll)
else()
  set(names zlib1=libz.so.1 geos_c=libgeos_c.so.1 counter=libcounter.so)
endif()
list(JOIN names " " names)
target_compile_definitions(nomos_tests PRIVATE "NOMOS_LIBRARY_NAMES=\"${names}\""
  "NOMOS_COUNTER_PATH=\"$<TARGET_FILE:nomos_counter>\"")
