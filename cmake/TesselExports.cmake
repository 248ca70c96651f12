# The linker's list of exported names, made from the public headers, so that the declarations are
# the only place where a procedure is named as public.
function(tessel_write_version_script output node)
  set(names)
  foreach(header IN LISTS ARGN)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
    file(READ "${header}" text)
    string(REGEX MATCHALL "\nTESSEL_API [^;(]*\\(" declarations "${text}")
    foreach(declaration IN LISTS declarations)
      string(REGEX REPLACE ".*[ *\n]([A-Za-z0-9_]+)\\($" "\\1" name "${declaration}")
      list(APPEND names "${name}")
    endforeach()
  endforeach()
  list(SORT names)
  list(JOIN names ";\n    " global)
  file(CONFIGURE OUTPUT "${output}"
    CONTENT "${node} {\n  global:\n    @global@;\n  local:\n    *;\n};\n" @ONLY)
endfunction()
