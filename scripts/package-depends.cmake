# Read by cpack before it makes the packages: works the dependencies out with dpkg-shlibdeps. In a cross
# build that is from the target's own libraries and their symbol files, which fetch-arm64 left in
# AARCH64_ROOT; where they lie there depends on the architecture that it is told. cpack's own way knows no
# cross build, and takes the layers for libraries that ldconfig has to know.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(work ${CPACK_BINARIES}/package-depends)
  file(MAKE_DIRECTORY ${work}/debian)
  file(WRITE ${work}/debian/control
    "Source: ${CPACK_PACKAGE_NAME}\n\nPackage: ${CPACK_PACKAGE_NAME}\nArchitecture: any\n")
  file(GLOB binaries ${CPACK_BINARIES}/union_suite ${CPACK_BINARIES}/union_triage
    ${CPACK_BINARIES}/union_explore
    ${CPACK_BINARIES}/layers/*.so ${CPACK_BINARIES}/*.so)
  list(TRANSFORM binaries PREPEND -e)
  set(root ${CPACK_AARCH64_ROOT})
  list(TRANSFORM root PREPEND -S)
  execute_process(
    COMMAND env DEB_HOST_ARCH=${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}
      dpkg-shlibdeps ${root} -O ${binaries}
    WORKING_DIRECTORY ${work}
    OUTPUT_VARIABLE depends ERROR_VARIABLE complaint RESULT_VARIABLE status
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "dpkg-shlibdeps: ${complaint}")
  endif()
  string(REGEX REPLACE "^shlibs:Depends=" "" CPACK_DEBIAN_PACKAGE_DEPENDS "${depends}")
endif()
