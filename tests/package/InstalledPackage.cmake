function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${scratch_dir})
run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${scratch_dir}/installed)
file(RENAME ${scratch_dir}/installed ${scratch_dir}/moved)

# The library, from a project that knows nothing but its package.
if(sanitize)
    set(flags -DCMAKE_CXX_FLAGS=-fsanitize=${sanitize})
endif()
run(${CMAKE_COMMAND} -S ${consumer_dir} -B ${scratch_dir}/consumer -G ${generator}
    -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${scratch_dir}/moved ${flags})
run(${CMAKE_COMMAND} --build ${scratch_dir}/consumer)
run(${scratch_dir}/consumer/consumer ${scratch_dir}/consumer.zet)

# The tool, which looks for the plug-in and the picture library beside itself.
run(${scratch_dir}/moved/${bindir}/zet write --quiet --chart 64x32 --format rgb8 --frames 1
    -o ${scratch_dir}/tool.%04d.zet)
run(${scratch_dir}/moved/${bindir}/zet read --quiet ${scratch_dir}/tool.0001.zet -o ${scratch_dir}/tool.exr)
# The common sort of EXR goes without the picture library.
file(REMOVE ${scratch_dir}/moved/${modules}/zetPictureLibrary.so)
run(${scratch_dir}/moved/${bindir}/zet write --quiet ${scratch_dir}/tool.exr -f rgb8 -o ${scratch_dir}/again.zet)
execute_process(COMMAND ${scratch_dir}/moved/${bindir}/zet read ${scratch_dir}/again.zet -o ${scratch_dir}/again.png
    RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 2 OR NOT errors MATCHES "cannot load the picture library: .*zetPictureLibrary.so")
    message(FATAL_ERROR "without its picture library zet ended with ${status} and \"${errors}\"")
endif()

foreach(file IN ITEMS consumer.zet tool.0001.zet again.zet)
    file(SIZE ${scratch_dir}/${file} size)
    if(NOT size EQUAL 6172) # 28 + 64 * 32 * 3
        message(FATAL_ERROR "${file} has ${size} bytes, expected 6172")
    endif()
endforeach()
