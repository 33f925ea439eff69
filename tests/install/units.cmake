# Installs a build into an empty prefix and lets systemd judge the units.
#
# cmake -DANALYZE=… -DBUILD_DIR=… -DWORK_DIR=… -P units.cmake

# systemd's measure of what a service could do, in tenths: 0 is nothing, 100 is everything.
set(most_exposure 10)

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${status}\n${out}${err}")
  endif()
  set(out "${out}${err}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR})
set(units ${WORK_DIR}/lib/systemd/system)
file(STRINGS ${units}/orvel-analyticsd.service start REGEX "^ExecStart=")
if(NOT start STREQUAL "ExecStart=${WORK_DIR}/bin/orvel-analyticsd serve")
  message(FATAL_ERROR "The unit starts something else than what was installed: ${start}")
endif()
run(${ANALYZE} verify ${units}/orvel-analyticsd.service ${units}/orvel-analyticsd.socket)
if(NOT out STREQUAL "")
  message(FATAL_ERROR "systemd finds in the units:\n${out}")
endif()
run(${ANALYZE} security --offline=true --threshold=${most_exposure}
    ${units}/orvel-analyticsd.service)
if(NOT EXISTS ${WORK_DIR}/lib/sysusers.d/orvel-analytics.conf)
  message(FATAL_ERROR "The user's definition was not installed.")
endif()
