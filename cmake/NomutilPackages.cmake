# Packages of what is installed: three Debian packages, or one zip for Windows. scripts/package
# makes them. A component of the installation is a package.
set(CPACK_PACKAGE_NAME nomutil)
set(CPACK_PACKAGE_VENDOR "nomutil")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each Debian package has its own
set(CPACK_PACKAGE_CONTACT "nomutil maintainers <maintainers@nomutil.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME nomutil-${PROJECT_VERSION}-windows-x64)
  set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/packaging/sortzip.cmake)
  # What the zip is, and the notices of what others made, as the packages have them that it is from.
  configure_file(${PROJECT_SOURCE_DIR}/cmake/packaging/README-windows.txt.in
    ${PROJECT_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE CRLF)
  install(FILES ${PROJECT_BINARY_DIR}/README.txt COMPONENT runtime DESTINATION .)
  foreach(notice gcc:gcc-mingw-w64-x86-64-posix-runtime mingw-w64:mingw-w64-x86-64-dev
      zlib:libz-mingw-w64 cli11:libcli11-dev nlohmann-json:nlohmann-json3-dev)
    string(REPLACE ":" ";" notice ${notice})
    list(GET notice 0 name)
    list(GET notice 1 package)
    install(FILES /usr/share/doc/${package}/copyright RENAME ${name}.txt COMPONENT runtime
      DESTINATION notices)
  endforeach()
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  set(exactly "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

  set(runtime libnomutil${NOMUTIL_ABI})
  set(CPACK_COMPONENTS_ALL runtime development tool)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  # Which package brings a library, and that the cache of libraries is to be renewed.
  set(control ${PROJECT_BINARY_DIR}/debian-control)
  file(WRITE ${control}/shlibs
    "libnomos ${NOMUTIL_ABI} ${runtime}\nlibnomutil ${NOMUTIL_ABI} ${runtime}\n")
  file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
  file(CHMOD ${control}/shlibs ${control}/triggers
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "zlib1g, libgeos-c1v5")
  set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "utility library of an object database
Exact decimals, parameters, dates, identifiers, event boxes, dynamic objects,
compression and the texts of status numbers, with the layer below them that
hides the operating system.")

  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnomutil-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} ${exactly}")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "python3")
  set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "utility library of an object database: development
Headers, the files for CMake and pkg-config, and the module nomutil for
Python, which needs no compiler.")

  set(CPACK_DEBIAN_TOOL_PACKAGE_NAME nomtool)
  set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${runtime} ${exactly}")
  set(CPACK_DEBIAN_TOOL_DESCRIPTION "utility library of an object database: program
Exact figures of delimited files, decimals, dates, identifiers and messages
from the command line.")

  # What a Debian package says about itself. A compressed file holds no time and no name.
  find_program(NOMUTIL_GZIP gzip REQUIRED)
  set(packaging ${PROJECT_SOURCE_DIR}/cmake/packaging)
  set(changes ${PROJECT_BINARY_DIR}/changelog.Debian.gz)
  set(page ${PROJECT_BINARY_DIR}/nomtool.1.gz)
  add_custom_command(OUTPUT ${changes} ${page}
    COMMAND ${NOMUTIL_GZIP} -9nc ${packaging}/changelog > ${changes}
    COMMAND ${NOMUTIL_GZIP} -9nc ${PROJECT_SOURCE_DIR}/docs/nomtool.1 > ${page}
    DEPENDS ${packaging}/changelog ${PROJECT_SOURCE_DIR}/docs/nomtool.1)
  add_custom_target(nomutil_package_texts ALL DEPENDS ${changes} ${page})
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    install(FILES ${changes} ${packaging}/copyright COMPONENT ${component}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  endforeach()
  if(NOMUTIL_BUILD_TOOLS)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/nomtool/nomtool.bash-completion RENAME nomtool
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
  endif()
endif()
include(CPack)
