# The DLLs: for which machine they are, what they import and what they export. Microsoft's compiler
# has other names for all that is exported.
string(REGEX REPLACE "clang[+][+]$" "readobj" readobj ${CMAKE_CXX_COMPILER})
find_program(ORVEL_CXXFILT c++filt REQUIRED)
mark_as_advanced(ORVEL_CXXFILT)
set(machine_AMD64 IMAGE_FILE_MACHINE_AMD64)
set(machine_ARM64 IMAGE_FILE_MACHINE_ARM64)

# orvel_dll_test(TARGET IMPORT...) holds the DLL against TARGET.dll.symbols. Beside the C runtime and
# the kernel, it may import what is named.
function(orvel_dll_test target)
  list(JOIN ARGN "|" imports)
  add_test(
    NAME Install.${target}.dllIsWhatItShouldBe
    COMMAND
      ${CMAKE_COMMAND} -DREADOBJ=${readobj} -DDEMANGLE=${ORVEL_CXXFILT}
      -DLIBRARY=$<TARGET_FILE:${target}> -DMACHINE=${machine_${CMAKE_SYSTEM_PROCESSOR}}
      "-DIMPORTS=KERNEL32.dll|api-ms-win-crt-[a-z]+-l1-1-0.dll|${imports}"
      -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/${target}.dll.symbols -P
      ${CMAKE_CURRENT_SOURCE_DIR}/check_windows_dll.cmake)
endfunction()

if(ORVEL_RPC_CLIENT STREQUAL "testing")
  orvel_dll_test(orvel-analytics orvel-analytics-testing.dll)
else()
  orvel_dll_test(orvel-analytics orvel-rpc-client.dll)
  orvel_dll_test(orvel-rpc-client ADVAPI32.dll)
endif()
