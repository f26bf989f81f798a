# A library that stands in for GEOS, for answers that GEOS does not give on demand and for platforms
# without one, and a configuration that names its folder. GEOS's own header is the same on every
# platform; it is reached through links, so that a cross build does not search the host's headers.
find_path(NOMUTIL_GEOS_INCLUDE geos_c.h REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(geos_headers ${CMAKE_CURRENT_BINARY_DIR}/geos-headers)
file(MAKE_DIRECTORY ${geos_headers})
foreach(name geos_c.h geos)
  file(CREATE_LINK ${NOMUTIL_GEOS_INCLUDE}/${name} ${geos_headers}/${name} SYMBOLIC)
endforeach()

set(standin ${CMAKE_CURRENT_BINARY_DIR}/geos-standin)
add_library(geos_standin MODULE ${CMAKE_CURRENT_SOURCE_DIR}/geometry/standin/standin.cpp)
target_link_libraries(geos_standin PRIVATE nomutil_flags)
target_compile_definitions(geos_standin PRIVATE NOMUTIL_BUILDING)
target_compile_options(geos_standin PRIVATE "SHELL:-iquote ${CMAKE_CURRENT_SOURCE_DIR}"
  "SHELL:-iquote ${PROJECT_SOURCE_DIR}/objman/common/source")
target_include_directories(geos_standin SYSTEM PRIVATE ${geos_headers})
set_target_properties(geos_standin PROPERTIES CXX_VISIBILITY_PRESET default
  LIBRARY_OUTPUT_DIRECTORY ${standin} PREFIX "" OUTPUT_NAME geos_c)
if(NOT WIN32)
  set_target_properties(geos_standin PROPERTIES OUTPUT_NAME libgeos_c SUFFIX .so.1)
endif()
file(WRITE ${standin}/standin.ini "[NomLibraries]\ngeos_c=${standin}\n")
add_dependencies(geometry_tests geos_standin)
target_compile_definitions(geometry_tests PRIVATE
  "NOMUTIL_STANDIN_CONFIGURATION=\"${standin}/standin.ini\"")

# Linux has the GEOS of the system, which tests of results call side by side.
if(NOT WIN32)
  find_library(NOMUTIL_GEOS geos_c REQUIRED)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/geometry/geos/*.cpp)
  target_sources(geometry_tests PRIVATE ${sources})
  target_include_directories(geometry_tests SYSTEM PRIVATE ${geos_headers})
  target_link_libraries(geometry_tests PRIVATE ${NOMUTIL_GEOS})
endif()
