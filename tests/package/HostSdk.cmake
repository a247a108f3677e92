# Builds the plug-in against a host's SDK: folders as an SDK has them, with the embedded host's files in them.
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${scratch_dir})
file(COPY ${source_dir}/host/DDImage DESTINATION ${scratch_dir}/sdk/include)
configure_file(${host_library} ${scratch_dir}/sdk/libDDImage.so COPYONLY)

set(configure ${CMAKE_COMMAND} -S ${source_dir} -B ${scratch_dir}/build -G ${generator}
    -D CMAKE_CXX_COMPILER=${compiler} -D ZET_TOOL=OFF -D BUILD_TESTING=OFF)
run(${configure} -D NUKE_ROOT=${scratch_dir}/sdk)
run(${CMAKE_COMMAND} --build ${scratch_dir}/build --target zetWriterNuke --parallel 2)
run(${CMAKE_COMMAND} --install ${scratch_dir}/build --component nuke --prefix ${scratch_dir}/installed)

file(GLOB_RECURSE installed RELATIVE ${scratch_dir}/installed ${scratch_dir}/installed/*)
set(expected ${libdir}/nuke/z9ztWriter.tcl ${libdir}/nuke/zetWriter.so)
if(NOT installed STREQUAL expected)
    message(FATAL_ERROR "installed \"${installed}\", expected \"${expected}\"")
endif()
execute_process(COMMAND ${nm} --dynamic --defined-only ${scratch_dir}/installed/${libdir}/nuke/zetWriter.so
    OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
if(exported)
    message(FATAL_ERROR "the plug-in exports what no host looks for:\n${exported}")
endif()

execute_process(COMMAND ${configure} -D NUKE_ROOT=/nowhere RESULT_VARIABLE result ERROR_VARIABLE errors)
if(result EQUAL 0 OR NOT errors MATCHES "is not the folder of an SDK")
    message(FATAL_ERROR "a wrong NUKE_ROOT was not refused: ${errors}")
endif()
