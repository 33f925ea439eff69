# Holds a DLL against what it should be.
#
# cmake -DREADOBJ=… -DDEMANGLE=… -DLIBRARY=… -DMACHINE=… -DIMPORTS=… -DEXPECTED=… -P
# check_windows_dll.cmake
#
# EXPECTED is a file that lists the exported names, demangled and sorted; IMPORTS is a regular
# expression for the names of the DLLs that it may import.

function(read result)
  execute_process(
    COMMAND ${READOBJ} ${ARGN} ${LIBRARY}
    OUTPUT_VARIABLE output
    COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${output}" PARENT_SCOPE)
endfunction()

read(headers --file-headers)
if(NOT headers MATCHES "Machine: ${MACHINE} ")
  message(FATAL_ERROR "${LIBRARY} is not for ${MACHINE}:\n${headers}")
endif()

read(imports --coff-imports)
string(REGEX MATCHALL "Import {\n *Name: [^\n]+" imports "${imports}")
list(TRANSFORM imports REPLACE "Import {\n *Name: " "")
list(LENGTH imports count)
if(count EQUAL 0)
  message(FATAL_ERROR "${LIBRARY} imports nothing")
endif()
foreach(import IN LISTS imports)
  if(NOT import MATCHES "^(${IMPORTS})$")
    message(FATAL_ERROR "${LIBRARY} imports ${import}, which is not among those expected")
  endif()
endforeach()

read(exports --coff-exports)
string(REGEX MATCHALL "\n  Name: [^\n]+" exports "${exports}")
list(TRANSFORM exports REPLACE "\n  Name: " "")
list(JOIN exports "\n" exports)
execute_process(
  COMMAND ${CMAKE_COMMAND} -E echo "${exports}"
  COMMAND ${DEMANGLE}
  OUTPUT_VARIABLE exports
  COMMAND_ERROR_IS_FATAL ANY)
# Constructors and destructors come in several variants of one name.
string(REGEX REPLACE "\n+$" "" exports "${exports}")
string(REPLACE "\n" ";" exports "${exports}")
list(SORT exports)
list(REMOVE_DUPLICATES exports)
list(JOIN exports "\n" exported)
string(APPEND exported "\n")
file(READ ${EXPECTED} expected)
if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "${LIBRARY} exports:\n${exported}\nand not what ${EXPECTED} lists.")
endif()
