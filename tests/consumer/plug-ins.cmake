# Builds a data-file plug-in as a customer would, against the installed package, and has the installed tool use it:
# source (the plug-ins' project), file (one that the plug-in gsf reads), and installed, compiler, sanitize, build as in
# run.cmake. All of the project is configured; one plug-in stands for those of its shape.
set(flags -O0)
if(sanitize)
  string(APPEND flags " -fsanitize=${sanitize}")
endif()
file(REMOVE_RECURSE ${build})
execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${source} -B ${build}
  -D CMAKE_PREFIX_PATH=${installed} -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_FLAGS=${flags}
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --target gsf-plug-in COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${build}/tree)
file(COPY ${installed}/ DESTINATION ${build}/tree)
file(REMOVE_RECURSE ${build}/tree/bin/Plugins)
file(COPY ${build}/bin/Plugins DESTINATION ${build}/tree/bin)
execute_process(COMMAND ${build}/tree/bin/tivor info ${file} OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
if(NOT told MATCHES "Type: +Gwyddion Simple Field")
  message(FATAL_ERROR "Expected the plug-in to read ${file}, found: ${told}")
endif()
