include(${CMAKE_CURRENT_LIST_DIR}/tesselTargets.cmake)

# Nothing of the C++ runtime is needed, so programs in C link with the C compiler alone.
foreach(library tessel::tessel tessel::tessel_static)
  if(TARGET ${library})
    get_target_property(configurations ${library} IMPORTED_CONFIGURATIONS)
    foreach(configuration ${configurations})
      set_target_properties(${library} PROPERTIES
        IMPORTED_LINK_INTERFACE_LANGUAGES_${configuration} C)
    endforeach()
  endif()
endforeach()

# Where the one library is static it has this name as well.
get_target_property(kind tessel::tessel TYPE)
if(kind STREQUAL STATIC_LIBRARY AND NOT TARGET tessel::tessel_static)
  add_library(tessel::tessel_static INTERFACE IMPORTED)
  set_target_properties(tessel::tessel_static PROPERTIES
    INTERFACE_LINK_LIBRARIES tessel::tessel)
endif()
