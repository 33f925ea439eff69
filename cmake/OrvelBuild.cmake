# What every target of the project is built with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(ORVEL_SANITIZE)
  add_compile_options(-fsanitize=${ORVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORVEL_SANITIZE})
endif()

# Warnings for code of the project, never for what it includes.
function(orvel_warnings target)
  if(ORVEL_SANITIZE)
    set(sanitizer_noise $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  endif()
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 $<$<BOOL:${ORVEL_WARNINGS_AS_ERRORS}>:/WX>)
  else()
    # GCC 12 sees copies inside std::basic_string overlap that never do (GCC bug 105651), and in
    # sanitized code it no longer sees what is initialised.
    target_compile_options(
      ${target}
      PRIVATE -Wall
              -Wextra
              -Wpedantic
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wold-style-cast
              -Wcast-qual
              -Woverloaded-virtual
              $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
              ${sanitizer_noise}
              $<$<BOOL:${ORVEL_WARNINGS_AS_ERRORS}>:-Werror>)
  endif()
endfunction()
