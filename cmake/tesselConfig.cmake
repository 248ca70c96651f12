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
