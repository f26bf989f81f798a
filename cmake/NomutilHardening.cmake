# What makes the binaries hard to misuse and the same wherever they are built.
# scripts/check-hardening looks at the result, scripts/check-reproducible builds twice.

# nomutil_hardened_flags(TARGET): the flags of compilation, for whoever links the target.
function(nomutil_hardened_flags target)
  # Neither texts nor debugging information name the folder of the sources or of the build.
  target_compile_options(${target} INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  cmake_path(IS_PREFIX PROJECT_SOURCE_DIR ${PROJECT_BINARY_DIR} NORMALIZE inside)
  if(NOT inside)
    target_compile_options(${target} INTERFACE "-ffile-prefix-map=${PROJECT_BINARY_DIR}=./build")
  endif()
  # The sanitizers check more, and their runtime replaces what the checked forms call.
  if(WIN32 OR NOMUTIL_SANITIZE)
    return()
  endif()
  target_compile_options(${target} INTERFACE -fstack-protector-strong)
  # The checked forms of the C library need an optimised build.
  target_compile_options(${target} INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endfunction()

if(WIN32)
  # ASLR over the whole address space, no execution of data; no time of linking in the file.
  set(link_flags
    " -Wl,--dynamicbase,--nxcompat,--high-entropy-va,--no-insert-timestamp")
else()
  # Everything is bound when a library is loaded, and the tables of addresses are read-only then.
  set(link_flags " -Wl,-z,relro,-z,now,-z,noexecstack")
  # Libraries are found beside each other in the build tree, too, wherever it lies.
  set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
endif()
string(APPEND CMAKE_SHARED_LINKER_FLAGS "${link_flags}")
string(APPEND CMAKE_MODULE_LINKER_FLAGS "${link_flags}")
string(APPEND CMAKE_EXE_LINKER_FLAGS "${link_flags}")
