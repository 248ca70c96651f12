# Packages, made by cpack: of Debian's form one for each of the three components, and archives.
set(CPACK_PACKAGE_NAME tessel)
set(CPACK_PACKAGE_VENDOR "The tessel contributors")
set(CPACK_PACKAGE_CONTACT "The tessel contributors <contributors@tessel.invalid>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DESCRIPTION_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/description.txt)
set(CPACK_PACKAGE_INSTALL_DIRECTORY tessel)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development documentation)
set(CPACK_THREADS 0)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/add_notices.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(library libtessel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtessel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}-1), libc6-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libtessel-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libtessel-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

file(STRINGS cmake/debian/description.txt description)
list(JOIN description "\n" description)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "${PROJECT_DESCRIPTION} (library)\n${description}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "${PROJECT_DESCRIPTION} (development)\n${description}\nThis package has the headers, the static library and the manual pages.")
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION
  "${PROJECT_DESCRIPTION} (documentation)\n${description}\nThis package has the guide, the reference in HTML and the examples.")

include(CPack)
