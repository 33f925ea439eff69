# Which RPC client library a program of this build talks through: the target orvel-chosen-rpc-client.
#
# Elsewhere than on Windows the library leaves the client open, and whoever links a program chooses.
# A DLL leaves nothing open: there the choice is made here, for the library and its programs alike.

add_library(orvel-chosen-rpc-client INTERFACE)
if(NOT WIN32)
  target_link_libraries(orvel-chosen-rpc-client INTERFACE Orvel::RpcClient)
  return()
endif()

set(ORVEL_RPC_CLIENT portable
    CACHE STRING "The RPC client library: portable (the project's own), testing (a service inside \
the process, for tests) or vendor (RpcClient.Native)")
set_property(CACHE ORVEL_RPC_CLIENT PROPERTY STRINGS portable testing vendor)

if(ORVEL_RPC_CLIENT STREQUAL "portable")
  target_link_libraries(orvel-chosen-rpc-client INTERFACE Orvel::RpcClient)
elseif(ORVEL_RPC_CLIENT STREQUAL "testing")
  target_link_libraries(orvel-chosen-rpc-client INTERFACE orvel-analytics-testing)
elseif(ORVEL_RPC_CLIENT STREQUAL "vendor")
  if(NOT MSVC)
    message(FATAL_ERROR "RpcClient.Native has the C++ ABI of Microsoft's compiler; build with it.")
  endif()
  set(ORVEL_RPC_CLIENT_LIBRARY ""
      CACHE FILEPATH "The import library of the vendor's RpcClient.Native.dll")
  if(NOT EXISTS "${ORVEL_RPC_CLIENT_LIBRARY}")
    message(FATAL_ERROR "ORVEL_RPC_CLIENT_LIBRARY must name the vendor's RpcClient.Native.lib.")
  endif()
  target_link_libraries(orvel-chosen-rpc-client INTERFACE "${ORVEL_RPC_CLIENT_LIBRARY}")
  target_include_directories(orvel-chosen-rpc-client
                             INTERFACE ${PROJECT_SOURCE_DIR}/relay/include)
else()
  message(FATAL_ERROR "ORVEL_RPC_CLIENT is ${ORVEL_RPC_CLIENT}: portable, testing or vendor.")
endif()
