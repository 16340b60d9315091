# Installs a build into an empty prefix, builds the examples against that prefix alone, and runs them; then builds
# one program with nothing but pkg-config.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nfailed (${status}):\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The examples are copied away from the tree, so that nothing of it is found by accident.
file(COPY ${SOURCE_DIR}/examples DESTINATION ${WORK_DIR})
run(${CMAKE_COMMAND} -G Ninja -S ${WORK_DIR}/examples -B ${WORK_DIR}/build
    -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_CXX_FLAGS=${CXX_FLAGS}
    -D CMAKE_BUILD_TYPE=${BUILD_TYPE})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK_DIR}/build --output-on-failure --no-tests=error)

# No private header is installed, and none of the libraries' own dependencies is needed to compile.
file(GLOB_RECURSE private ${prefix}/include/*command_parser.hpp ${prefix}/include/*script_*.hpp)
if(private)
    message(FATAL_ERROR "private headers are installed: ${private}")
endif()

if(NOT WIN32)
    file(GLOB_RECURSE pc ${prefix}/*/tern_common.pc)
    cmake_path(GET pc PARENT_PATH pc_dir)
    set(ENV{PKG_CONFIG_PATH} ${pc_dir})
    run(pkg-config --cflags --libs --dont-define-prefix tern_common) # whether or not it would guess the prefix
    separate_arguments(flags UNIX_COMMAND "${output}")
    separate_arguments(extra UNIX_COMMAND "${CXX_FLAGS}")
    cmake_path(GET pc_dir PARENT_PATH lib_dir)
    run(${CXX_COMPILER} -std=c++20 ${extra} ${WORK_DIR}/examples/command_host_example.cpp
        -o ${WORK_DIR}/with_pkg_config ${flags} -Wl,-rpath,${lib_dir})
    run(${WORK_DIR}/with_pkg_config ${WORK_DIR}/examples/greetings.txt)
    if(NOT output MATCHES "2 greetings")
        message(FATAL_ERROR "the program built with pkg-config said: ${output}")
    endif()
endif()
