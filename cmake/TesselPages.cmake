# The programs in pages of Markdown, as tests. In a page each block labelled c or cpp is a complete
# program, and the next labelled block is text: exactly what the program prints.

# tessel_add_page(PAGE) builds the programs of a page, as guide_NAME in C and guide_NAME_cpp in C++,
# and adds a test for each. Programs have semicolons and brackets, so the page is never a list.
function(tessel_add_page page)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
  cmake_path(GET page STEM name)
  string(TOLOWER guide_${name} name)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/guide)

  file(READ ${page} rest)
  string(PREPEND rest "\n")
  set(program)
  while(TRUE)
    string(FIND "${rest}" "\n```" fence)
    if(fence EQUAL -1)
      break()
    endif()
    # The label goes to the end of its line; the block from there to the next fence.
    math(EXPR label_start "${fence} + 4")
    string(SUBSTRING "${rest}" ${label_start} -1 rest)
    string(FIND "${rest}" "\n" label_length)
    string(SUBSTRING "${rest}" 0 ${label_length} label)
    string(SUBSTRING "${rest}" ${label_length} -1 rest)
    string(FIND "${rest}" "\n```" block_length)
    if(label_length EQUAL -1 OR block_length EQUAL -1)
      message(FATAL_ERROR "${page}: a block without an end")
    endif()
    string(SUBSTRING "${rest}" 1 ${block_length} block)
    math(EXPR behind "${block_length} + 4")
    string(SUBSTRING "${rest}" ${behind} -1 rest)

    if(program AND NOT label STREQUAL "text")
      message(FATAL_ERROR "${page}: the program ${program} has no output behind it")
    elseif(label STREQUAL "c" OR label STREQUAL "cpp")
      set(program ${name})
      if(label STREQUAL "cpp")
        set(program ${name}_cpp)
      endif()
      tessel_write_if_new(${folder}/${program}.${label} "${block}")
      tessel_add_page_program(${program} ${folder}/${program}.${label})
    elseif(label STREQUAL "text")
      if(NOT program)
        message(FATAL_ERROR "${page}: an output without a program before it")
      endif()
      tessel_write_if_new(${folder}/${program}.txt "${block}")
      tessel_add_script(${program} page_test.sh
        $<TARGET_FILE:${program}> ${folder}/${program}.txt)
      set(program)
    endif()
  endwhile()
  if(program)
    message(FATAL_ERROR "${page}: the program ${program} has no output behind it")
  endif()
endfunction()

# A library under clang's sanitizers needs a part of them that its C++ compiler alone links.
function(tessel_add_page_program name source)
  add_executable(${name} ${source})
  set_target_properties(${name} PROPERTIES
    LINKER_LANGUAGE CXX
    C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF
    CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
  )
  target_compile_options(${name} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${TESSEL_WARNINGS_AS_ERRORS}>:-Werror>
  )
  target_link_libraries(${name} PRIVATE tessel::tessel)
endfunction()

# A file that stays as it is need not be compiled again.
function(tessel_write_if_new path text)
  if(EXISTS ${path})
    file(READ ${path} old)
    if("${old}" STREQUAL "${text}")
      return()
    endif()
  endif()
  file(WRITE ${path} "${text}")
endfunction()
