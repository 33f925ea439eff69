# What every target of the project is built with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(WIN32)
  # The oldest Windows that has the runtime's JSON classes for applications of the desktop.
  add_compile_definitions(_WIN32_WINNT=0x0A00 UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
  # A DLL is looked for beside the program, so they stand together; no file's name begins with lib.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
  if(MSVC)
    add_compile_options(/utf-8 /permissive- /Zc:__cplusplus /EHsc)
  else()
    # The C++ runtime is part of every DLL and program, as no Windows brings it along.
    add_link_options(-static)
  endif()
endif()

if(ORVEL_SANITIZE)
  add_compile_options(-fsanitize=${ORVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORVEL_SANITIZE})
endif()

# orvel_compile_together(TARGET) lets a build of everything compile a target's files in groups, which
# takes half the time or less. A file that includes too little shows in the other builds.
option(ORVEL_COMPILE_TOGETHER "Compile files in groups, for who builds everything at once" OFF)
function(orvel_compile_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${ORVEL_COMPILE_TOGETHER})
endfunction()

# orvel_compile_rooms_together(TARGET [FILE...]) does the same for sources that also go into an archive
# of which tests take some: those of a folder make a group, but for files that tests replace.
function(orvel_compile_rooms_together target)
  orvel_compile_together(${target})
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  list(REMOVE_ITEM sources ${ARGN})
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH room)
    string(MAKE_C_IDENTIFIER ${room} room)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room})
  endforeach()
endfunction()

# Warnings for code of the project, never for what it includes.
function(orvel_warnings target)
  if(ORVEL_SANITIZE)
    set(sanitizer_noise $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  endif()
  if(ORVEL_SANITIZE MATCHES thread)
    # ThreadSanitizer does not see the fences that Asio has beside its locks, and need not.
    list(APPEND sanitizer_noise $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
  endif()
  if(MSVC)
    # 4251 and 4275: an exported class has members and bases of the standard library, which a program
    # of the same compiler shares. 4996: the standard C functions are no worse than Microsoft's.
    target_compile_options(${target} PRIVATE /W4 /wd4251 /wd4275 /wd4996
                                             $<$<BOOL:${ORVEL_WARNINGS_AS_ERRORS}>:/WX>)
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
