# What every target of the project shares: language level, warnings, include paths, sanitizers,
# output folders; and the functions that declare a family and the programs that link families.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
if(WIN32)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")  # nomutil.dll, not libnomutil.dll
endif()

# The number in libnomutil.so.1: it grows when a program that was linked before no longer works.
set(NOMUTIL_ABI 1)
set(NOMUTIL_LIBRARY_VERSION ${NOMUTIL_ABI}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH})

# One interface target carries the common flags, so that code from outside the project
# (googletest) is compiled without them. include/ is searched for quoted names only:
# its folder sys/ must never shadow the system's own.
add_library(nomutil_flags INTERFACE)
target_compile_options(nomutil_flags INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wimplicit-fallthrough -Wundef
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # g++ 12 sees overlap in every "text" + std::string
  # Nobody replaces single functions of the libraries, so their own calls are direct.
  $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>
  "SHELL:-iquote ${PROJECT_SOURCE_DIR}/include"
  "SHELL:-iquote ${PROJECT_SOURCE_DIR}/nomos/include")
include(NomutilHardening)
nomutil_hardened_flags(nomutil_flags)

if(NOMUTIL_SANITIZE)
  add_compile_options(-fsanitize=${NOMUTIL_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${NOMUTIL_SANITIZE})
  add_compile_definitions(NOMOS_KEEPS_BLOCKS=0)
endif()

if(NOMUTIL_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(NOT WIN32)
  # What a library instantiates from the standard library's templates is not its interface.
  string(APPEND CMAKE_SHARED_LINKER_FLAGS
    " -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/hidestandard.map")
  if(NOT NOMUTIL_SANITIZE)
    string(APPEND CMAKE_SHARED_LINKER_FLAGS " -Wl,--no-undefined")
  endif()
endif()

# The libraries share one C++ runtime, since exceptions cross from nomos into nomutil. On Windows
# its DLLs, without their symbols, and zlib lie next to the programs in the build tree, and next to
# our DLLs when installed.
set(NOMUTIL_RUNTIME_DLLS)
if(WIN32)
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE ${path})
      message(FATAL_ERROR "The compiler does not know where ${dll} is.")
    endif()
    set(copy ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll})
    file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    # Else the time of stripping stands in the copy.
    execute_process(COMMAND ${CMAKE_STRIP} --preserve-dates -o ${copy} ${path}
      COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND NOMUTIL_RUNTIME_DLLS ${copy})
  endforeach()
  find_file(NOMUTIL_ZLIB_DLL zlib1.dll PATHS /lib REQUIRED)
  configure_file(${NOMUTIL_ZLIB_DLL} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/zlib1.dll COPYONLY)
  list(APPEND NOMUTIL_RUNTIME_DLLS ${NOMUTIL_ZLIB_DLL})
endif()

# nomutil_family(NAME [DEPENDS family...])
# One family of the library, the files of its folder, as the OBJECT library nomutil_NAME. DEPENDS
# lists the families whose public headers it includes; they are declared before it, and
# scripts/check-layers compares the list with the #include lines.
function(nomutil_family name)
  cmake_parse_arguments(arg "" "" "DEPENDS" ${ARGN})
  foreach(lower IN LISTS arg_DEPENDS)
    if(NOT TARGET nomutil_${lower})
      message(FATAL_ERROR "${name} depends on ${lower}, which is not declared before it")
    endif()
  endforeach()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
  add_library(nomutil_${name} OBJECT ${sources})
  target_compile_definitions(nomutil_${name} PRIVATE NOMUTIL_BUILDING)
  target_link_libraries(nomutil_${name} PRIVATE nomutil_flags nomos)
  set_property(GLOBAL APPEND PROPERTY NOMUTIL_FAMILIES ${name})
endfunction()

# nomutil_link_families(program [family...]): gives a program of ours the objects and the private
# headers of these families, or of all. It reaches what the shared library hides.
function(nomutil_link_families program)
  set(families ${ARGN})
  if(NOT families)
    get_property(families GLOBAL PROPERTY NOMUTIL_FAMILIES)
  endif()
  foreach(family IN LISTS families)
    target_sources(${program} PRIVATE $<TARGET_OBJECTS:nomutil_${family}>)
    # The texts lie in a resource of the module that looks them up.
    if(family STREQUAL messages AND TARGET nomutil_message_resource)
      target_sources(${program} PRIVATE $<TARGET_OBJECTS:nomutil_message_resource>)
    endif()
  endforeach()
  target_compile_options(${program} PRIVATE
    "SHELL:-iquote ${PROJECT_SOURCE_DIR}/objman/common/source")
  target_compile_definitions(${program} PRIVATE NOMUTIL_BUILDING)
  target_link_libraries(${program} PRIVATE nomutil_flags nomos)
endfunction()

# nomutil_fuzz_program(program name [source...]): a program of fuzz/NAME_fuzz.cpp and these sources.
# It links the families' objects, so that hidden code is reached too.
function(nomutil_fuzz_program program name)
  add_executable(${program} ${PROJECT_SOURCE_DIR}/fuzz/${name}_fuzz.cpp ${ARGN})
  nomutil_link_families(${program})
  if(name STREQUAL snapshot)  # the tool reads them
    set(tool ${PROJECT_SOURCE_DIR}/tools/nomtool)
    foreach(file columnform rowpieces rowscanner snapshot snapshotreader storednumber valuetext)
      target_sources(${program} PRIVATE ${tool}/${file}.cpp)
    endforeach()
    target_include_directories(${program} PRIVATE ${tool})
  endif()
endfunction()

# nomutil_version_resource(TARGET description): on Windows, a version resource made from the
# project's version; nothing elsewhere.
function(nomutil_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(NOMUTIL_RC_NAME ${target})
  set(NOMUTIL_RC_DESCRIPTION ${description})
  set(rc ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${rc} @ONLY)
  target_sources(${target} PRIVATE ${rc})
endfunction()
