# Run by cpack before it packs. Each package of Debian's form has the licence and a change log of that
# form under its own name.
cmake_minimum_required(VERSION 3.25)
# What cpack installs for itself is nothing to uninstall.
file(GLOB manifests ${CPACK_TESSEL_BINARY_DIR}/install_manifest*.txt)
file(REMOVE ${manifests})

if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()

set(sources ${CMAKE_CURRENT_LIST_DIR}/../..)
file(STRINGS ${sources}/LICENSE lines)
list(FILTER lines INCLUDE REGEX "^Copyright")
string(REGEX REPLACE "^Copyright \\(c\\) " "" holder "${lines}")
file(READ ${sources}/LICENSE licence)
string(REGEX REPLACE "^.*\n\n(Permission)" "\\1" licence "${licence}")
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(STRIP "${licence}" licence)
string(REPLACE "\n" "\n " licence " ${licence}")
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} key)
  set(folder
    ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  file(WRITE ${folder}/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
    "Upstream-Name: tessel\n\nFiles: *\nCopyright: ${holder}\nLicense: Expat\n${licence}\n")
  set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
  file(WRITE ${folder}/changelog.Debian
    "tessel (${version}) unstable; urgency=medium\n\n"
    "  * Release ${CPACK_PACKAGE_VERSION}.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
  execute_process(COMMAND gzip -9n ${folder}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
endforeach()
