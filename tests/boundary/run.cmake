# run(command argument...): runs a command, shows its output, and ends the script where it fails.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  list(JOIN ARGV " " command)
  message("${command}\n${output}")
  if(result)
    message(FATAL_ERROR "exit value ${result}: ${command}")
  endif()
endfunction()
