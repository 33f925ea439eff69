# Holds the list of what the RPC client library exports.
#
# cmake -D NM=... -D LIBRARY=... -P check_exports.cmake

execute_process(
  COMMAND ${NM} --dynamic --defined-only --demangle --extern-only ${LIBRARY}
  OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)

set(expected
    "Orvel::Relay::Client::Native::RpcClient::GetClientForEndpoint")

string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(found 0)
foreach(line IN LISTS lines)
  # Address, kind, name; the version of the exported names has the kind A.
  if(line MATCHES "^[0-9a-f]+ A ")
    continue()
  endif()
  string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${line}")
  string(FIND "${name}" "${expected}(" at)
  if(NOT at EQUAL 0)
    message(SEND_ERROR "exported, and should not be: ${name}")
  else()
    math(EXPR found "${found} + 1")
  endif()
endforeach()

if(NOT found EQUAL 1)
  message(SEND_ERROR "${expected} is exported ${found} times")
endif()
