# Builds and runs the consumer against the installed package: way (find_package or pkg-config), installed, libraries
# (its library directory), compiler, sanitize (what the libraries were built with), build (a directory for it alone).
set(flags "")
if(sanitize)
  set(flags -fsanitize=${sanitize})
endif()
file(REMOVE_RECURSE ${build})
file(MAKE_DIRECTORY ${build})

if(way STREQUAL find_package)
  execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${CMAKE_CURRENT_LIST_DIR} -B ${build}
    -D CMAKE_PREFIX_PATH=${installed} -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_FLAGS=${flags}
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} COMMAND_ERROR_IS_FATAL ANY)
else()
  set(ENV{PKG_CONFIG_PATH} ${installed}/${libraries}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs Tivor
    OUTPUT_VARIABLE packageFlags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(packageFlags UNIX_COMMAND "${packageFlags}")
  execute_process(COMMAND ${compiler} -std=c++20 ${flags} ${CMAKE_CURRENT_LIST_DIR}/main.cpp ${packageFlags}
    -o ${build}/consumer COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{LD_LIBRARY_PATH} ${installed}/${libraries})
endif()
execute_process(COMMAND ${build}/consumer COMMAND_ERROR_IS_FATAL ANY)
