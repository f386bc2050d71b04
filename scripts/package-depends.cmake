# Read by cpack before it makes the packages of a cross build: works the dependencies out with
# dpkg-shlibdeps, from the target's own libraries and their symbol files, which fetch-arm64 left in
# AARCH64_ROOT.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(work ${CPACK_BINARIES}/package-depends)
  file(MAKE_DIRECTORY ${work}/debian)
  file(WRITE ${work}/debian/control
    "Source: ${CPACK_PACKAGE_NAME}\n\nPackage: ${CPACK_PACKAGE_NAME}\nArchitecture: any\n")
  file(GLOB binaries ${CPACK_BINARIES}/union_suite ${CPACK_BINARIES}/union_triage
    ${CPACK_BINARIES}/layers/*.so ${CPACK_BINARIES}/*.so)
  list(TRANSFORM binaries PREPEND -e)
  execute_process(
    COMMAND dpkg-shlibdeps -S${CPACK_AARCH64_ROOT} -O ${binaries}
    WORKING_DIRECTORY ${work}
    OUTPUT_VARIABLE depends ERROR_VARIABLE complaint RESULT_VARIABLE status
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "dpkg-shlibdeps: ${complaint}")
  endif()
  string(REGEX REPLACE "^shlibs:Depends=" "" CPACK_DEBIAN_PACKAGE_DEPENDS "${depends}")
endif()
