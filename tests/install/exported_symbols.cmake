# Holds the symbols that a library exports against the list of them.
#
# cmake -DNM=… -DLIBRARY=… -DEXPECTED=… -P exported_symbols.cmake

execute_process(
  COMMAND ${NM} --dynamic --defined-only --demangle --format=just-symbols ${LIBRARY}
  OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)
# Constructors and destructors come in several variants of one name.
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
list(SORT symbols)
list(REMOVE_DUPLICATES symbols)
list(JOIN symbols "\n" exported)
string(APPEND exported "\n")

file(READ ${EXPECTED} expected)
if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "${LIBRARY} exports:\n${exported}\nand not what ${EXPECTED} lists.")
endif()
