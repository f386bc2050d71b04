# What is installed, and the packages that cpack makes of it: a Debian package and an archive.
set(package union-conformance-suite)
set(CMAKE_INSTALL_DOCDIR share/doc/${package})
include(GNUInstallDirs)

set(layer_folder ${CMAKE_INSTALL_LIBDIR}/${package})
install(TARGETS union_suite RUNTIME)
install(TARGETS as_gpu broken_compiler one_device simulated_gpu LIBRARY DESTINATION ${layer_folder})
if(TARGET union_triage)
  install(TARGETS union_triage union_explore RUNTIME)
endif()
install(DIRECTORY baselines exploration/corpus DESTINATION ${CMAKE_INSTALL_DATADIR}/${package})
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING
  PATTERN "*.md" PATTERN "*.png" PATTERN "*.yml")

# Debian wants manual pages and the change log compressed, the same bytes each time.
foreach(text IN ITEMS union_suite.1 union_triage.1 union_explore.1 changelog)
  configure_file(docs/${text} ${text} @ONLY)
  add_custom_command(OUTPUT ${text}.gz
    COMMAND gzip -9nkf ${text}
    DEPENDS ${PROJECT_BINARY_DIR}/${text} VERBATIM)
endforeach()
add_custom_target(compressed ALL DEPENDS
  union_suite.1.gz union_triage.1.gz union_explore.1.gz changelog.gz)
install(FILES ${PROJECT_BINARY_DIR}/union_suite.1.gz ${PROJECT_BINARY_DIR}/union_triage.1.gz
  ${PROJECT_BINARY_DIR}/union_explore.1.gz
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_BINARY_DIR}/changelog.gz docs/copyright
  DESTINATION ${CMAKE_INSTALL_DOCDIR})

# A project that this one is a part of has packages of its own.
if(NOT CMAKE_SOURCE_DIR STREQUAL PROJECT_SOURCE_DIR)
  return()
endif()

# The architecture's name is Debian's; the build may be for another one than this machine's.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  set(architecture arm64)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  set(architecture amd64)
else()
  set(architecture ${CMAKE_SYSTEM_PROCESSOR})
endif()

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_CONTACT "The maintainers <maintainers@union-suite.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "conformance suite for unions in OpenCL drivers")
set(CPACK_PACKAGE_FILE_NAME ${package}_${PROJECT_VERSION}_${architecture})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}.deb)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${architecture})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "oclgrind, opencl-icd")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "A GPU's OpenCL compiler and runtime must treat a union that overlays
integers and floats as bytes, nothing else. union_suite holds 210 tests
of it; union_triage runs each of them alone, accounts for every one, and
explains what a device does wrong; union_explore finds programs with
unions, beyond those 210, that a driver gets wrong.")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/scripts/package-depends.cmake)
set(CPACK_AARCH64_ROOT ${AARCH64_ROOT})
set(CPACK_BINARIES ${PROJECT_BINARY_DIR})
include(CPack)
