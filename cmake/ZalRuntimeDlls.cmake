# Windows looks for a DLL next to the executable first: copy the libraries an executable links
# (zalaccelerate's and zalcore's DLLs) there after each build.
function(zal_copy_runtime_dlls target)
  if(WIN32)
    add_custom_command(TARGET ${target} POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_if_different
      $<TARGET_RUNTIME_DLLS:${target}> $<TARGET_FILE_DIR:${target}> COMMAND_EXPAND_LISTS)
  endif()
endfunction()
