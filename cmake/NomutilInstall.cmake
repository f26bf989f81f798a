# What `cmake --install` lays down: both libraries, their headers under include/nomutil, the
# package files for find_package(nomutil) and pkg-config, and on Windows the DLLs that they need.
# The tool and the message files are installed where they are built.
include(CMakePackageConfigHelpers)

set(nomutil_include ${CMAKE_INSTALL_INCLUDEDIR}/nomutil)
set(nomutil_config ${CMAKE_INSTALL_LIBDIR}/cmake/nomutil)

# Users write "sys/decimals.h" and "nomos/ulong.h" as the headers themselves do.
foreach(library nomos nomutil)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${nomutil_include}>)
  target_compile_features(${library} INTERFACE cxx_std_17)
endforeach()
if(NOT WIN32)
  # nomos is found beside nomutil, wherever the tree is put.
  set_target_properties(nomos nomutil PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()

install(TARGETS nomos nomutil EXPORT nomutilTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${NOMUTIL_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
# Until another component is named, what follows is for developers.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/sys ${PROJECT_SOURCE_DIR}/nomos/include/nomos
  DESTINATION ${nomutil_include} FILES_MATCHING PATTERN *.h)

install(FILES ${PROJECT_SOURCE_DIR}/bindings/python/nomutil.py
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nomutil/python)

install(EXPORT nomutilTargets NAMESPACE nomutil:: DESTINATION ${nomutil_config})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/nomutilConfig.cmake.in
  ${PROJECT_BINARY_DIR}/nomutilConfig.cmake INSTALL_DESTINATION ${nomutil_config})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nomutilConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nomutilConfig.cmake
  ${PROJECT_BINARY_DIR}/nomutilConfigVersion.cmake DESTINATION ${nomutil_config})

# The prefix is written relative to the file, so that a moved tree stays usable.
file(RELATIVE_PATH pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(package nomos nomutil)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc
    @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
