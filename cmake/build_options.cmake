# Options of this project's own targets. They are attached to targets privately: whoever embeds the library
# keeps their own flags.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

find_program(TERN_CCACHE ccache)
if(TERN_CCACHE AND PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${TERN_CCACHE})
endif()

set(TERN_COMMON_SANITIZERS "" CACHE STRING "Sanitizers for every target, as in -fsanitize=")

add_library(tern_build_options INTERFACE)
target_compile_features(tern_build_options INTERFACE cxx_std_20)
if(MSVC)
    target_compile_options(tern_build_options INTERFACE /W4 /permissive- /utf-8 /fp:precise
        # Exported classes hold and derive from types of the standard library; all storeys are built with one runtime.
        /wd4251 /wd4275)
    target_compile_definitions(tern_build_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
else()
    target_compile_options(tern_build_options INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
        -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
        # Reports and profiles name files by their path in the tree, wherever it was built.
        -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
        # Results of floating-point expressions are promised to the bit: no fused multiply-add.
        -ffp-contract=off
        # GCC binds statics of inline functions process-wide (STB_GNU_UNIQUE), and one of them keeps a library
        # mapped for ever after dlclose.
        $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
        # GCC 12 sees overlapping copies in plain concatenations of strings.
        $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
    find_program(TERN_LLD ld.lld)
    if(TERN_LLD AND NOT WIN32)
        target_link_options(tern_build_options INTERFACE -fuse-ld=lld)
    endif()
    if(NOT WIN32 AND NOT TERN_COMMON_SANITIZERS)
        target_link_options(tern_build_options INTERFACE -Wl,-z,defs)
    endif()
endif()
if(TERN_COMMON_SANITIZERS)
    target_compile_options(tern_build_options INTERFACE
        -fsanitize=${TERN_COMMON_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tern_build_options INTERFACE -fsanitize=${TERN_COMMON_SANITIZERS})
    if(TERN_COMMON_SANITIZERS MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The thread pool of Boost.Asio has fences, which the sanitizer does not follow, beside the locks that it does.
        target_compile_options(tern_build_options INTERFACE -Wno-tsan)
    endif()
    # What a program that is linked against a sanitized build needs.
    set(TERN_COMMON_CONSUMER_FLAGS -fsanitize=${TERN_COMMON_SANITIZERS})
endif()

option(TERN_COMMON_LIBFUZZER "Build the fuzz targets as libFuzzer programs (Clang)" OFF)
if(TERN_COMMON_LIBFUZZER)
    target_compile_options(tern_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_package(Threads REQUIRED)
