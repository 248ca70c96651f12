# The reference, as web pages and as manual pages, both from the comments of the headers.
find_package(Doxygen REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(docs_dir ${PROJECT_BINARY_DIR}/docs)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${docs_dir}/Doxyfile @ONLY)
file(GLOB documented CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/include/tessel.h ${PROJECT_SOURCE_DIR}/include/tessel/*.h
  ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/docs/guide/*.md
  ${PROJECT_SOURCE_DIR}/README.md)
# What is left of an earlier run would be installed with the rest.
add_custom_command(OUTPUT ${docs_dir}/made
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${docs_dir}/html ${docs_dir}/xml ${docs_dir}/man
  COMMAND ${CMAKE_COMMAND} -E chdir ${docs_dir} ${DOXYGEN_EXECUTABLE} Doxyfile
  COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/docs/man.py
    ${docs_dir}/xml ${PROJECT_VERSION} ${docs_dir}/man
  COMMAND ${CMAKE_COMMAND} -E touch ${docs_dir}/made
  DEPENDS ${documented} ${docs_dir}/Doxyfile ${PROJECT_SOURCE_DIR}/docs/man.py
  COMMENT "Making the reference"
)
add_custom_target(tessel_docs ALL DEPENDS ${docs_dir}/made)

if(TESSEL_INSTALL)
  install(DIRECTORY ${docs_dir}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development)
  install(DIRECTORY ${docs_dir}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
endif()
