# What `cmake --install` puts where: the library for programs to run (component `runtime`), what it
# takes to build them (`development`), and what there is to read (`documentation`).
include(CMakePackageConfigHelpers)

set(libraries tessel)
if(BUILD_SHARED_LIBS AND UNIX)
  # From the same objects. On Windows they are marked as exported, which is not for programs.
  tessel_add_library(tessel_static STATIC)
  set_target_properties(tessel_static PROPERTIES OUTPUT_NAME tessel)
  target_compile_definitions(tessel_static PUBLIC TESSEL_STATIC)
  list(APPEND libraries tessel_static)
endif()

install(TARGETS ${libraries} EXPORT tessel
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
)
install(FILES ${PROJECT_SOURCE_DIR}/include/tessel.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES ${public_headers}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tessel COMPONENT development)

# find_package(tessel CONFIG)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tessel)
# Before 1.0 a minor version may change the interface.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tesselConfigVersion.cmake
  COMPATIBILITY ${compatibility})
install(EXPORT tessel NAMESPACE tessel:: FILE tesselTargets.cmake
  DESTINATION ${package_dir} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/tesselConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/tesselConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# pkg-config: all places are told from where the file lies, so that the tree can be moved.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  set(pc_prefix "\${pcfiledir}/${up}")
  string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
endif()
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY "\${prefix}" OUTPUT_VARIABLE pc_libdir)
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_INCLUDEDIR BASE_DIRECTORY "\${prefix}"
  OUTPUT_VARIABLE pc_includedir)
if(NOT BUILD_SHARED_LIBS)
  set(pc_static " -DTESSEL_STATIC")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/tessel.pc.in tessel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tessel.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# gdb finds what goes with a library by the library's own place.
if(BUILD_SHARED_LIBS AND UNIX)
  install(FILES ${PROJECT_SOURCE_DIR}/gdb/tessel-gdb.py
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
    RENAME libtessel.so.${PROJECT_VERSION}-gdb.py COMPONENT development)
endif()

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md ${PROJECT_SOURCE_DIR}/LICENSE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation FILES_MATCHING PATTERN *.md)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

# All that was installed, and the folders that are empty then and bear the library's name.
if(PROJECT_IS_TOP_LEVEL)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake.in uninstall.cmake @ONLY)
  add_custom_target(uninstall ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_BINARY_DIR}/uninstall.cmake)
endif()
