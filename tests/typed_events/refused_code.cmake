# Holds that the compiler takes the code of refused_code.cpp, and refuses it with one more line.
#
# cmake -DCXX=… -DSOURCE=… -DINCLUDES=… -P refused_code.cmake

function(compile line)
  list(TRANSFORM INCLUDES PREPEND -I OUTPUT_VARIABLE includes)
  execute_process(
    COMMAND ${CXX} -std=c++20 -fsyntax-only ${includes} "-DORVEL_LINE=${line}" ${SOURCE}
    ERROR_VARIABLE error
    RESULT_VARIABLE status)
  set(status ${status} PARENT_SCOPE)
  set(error "${error}" PARENT_SCOPE)
endfunction()

# refuse(LINE REASON) REASON is a regular expression for what the compiler says.
function(refuse line reason)
  compile("${line}")
  if(status EQUAL 0)
    message(SEND_ERROR "The compiler takes: ${line}")
  elseif(NOT error MATCHES "${reason}")
    message(SEND_ERROR "The compiler refuses ${line} for another reason:\n${error}")
  endif()
endfunction()

compile("")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "The compiler refuses what it should take:\n${error}")
endif()

# The marks that part statements would part lists here.
refuse([[event.setOtherText("sixsix")]] "thisLiteralIsLongerThanItsFieldAllows")
refuse([[event.setOtherText("\"hi\"x")]] "thisLiteralIsLongerThanItsFieldAllows")
refuse([[event.setOtherText(ORVEL_TEXT("sixsix"))]] "thisLiteralIsLongerThanItsFieldAllows")
refuse([[event.setOtherText("\xff")]] "thisLiteralIsNotWellFormed")
refuse([[event.setCount(std::int64_t{1})]] "delete")
refuse([[event.setCount(1.5)]] "delete")
refuse([[event.setCount(true)]] "delete")
refuse([[event.setOtherText(nullptr)]] "nullptr|no matching|no viable|could not convert")
refuse([[EveryTypeEvent other({.text = "x", .flag = true})]] "no matching|count")
