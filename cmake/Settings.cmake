# Compiler settings that every target has, and what the presets choose between.

option(TESSARINE_TESTS "Build the tests" ON)
option(TESSARINE_BENCH "Build the benchmarks" OFF)
option(TESSARINE_FUZZ "Build the fuzz targets (clang only)" OFF)
option(TESSARINE_PCH "Use precompiled headers" OFF)
set(TESSARINE_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize: address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
add_compile_options(-fPIC)  # for programs too: one precompiled header serves all
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# the version stands in project() only; a file that tells it is named here, so that a new one rebuilds no other
set_property(SOURCE tools/talv-sim/options.cpp tools/srfpack/options.cpp host/options.cpp
             APPEND PROPERTY COMPILE_DEFINITIONS TESSARINE_VERSION="${PROJECT_VERSION}")

set(TESSARINE_BIN_DIR ${CMAKE_BINARY_DIR}/bin)
set(TESSARINE_COMPONENTS lib/talv-host/Components)  # below the build folder and below the prefix
set(TESSARINE_ENGINES lib/tessarine/Components)     # components for any program that wants them

add_compile_options(-Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror)
# paths in the products are those of the tree, whoever built them
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-fno-gnu-unique)  # a unique symbol would pin the module and share it with the host
endif()

if(TESSARINE_SANITIZE)
    add_compile_options(-fsanitize=${TESSARINE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TESSARINE_SANITIZE})
    if(TESSARINE_FUZZ)  # the coverage that guides the fuzzers
        add_compile_options(-fsanitize=fuzzer-no-link)
        add_link_options(-fsanitize=fuzzer-no-link)
    endif()
    add_compile_definitions(TESSARINE_SANITIZED)  # the host keeps modules mapped, so that reports have names
    if(TESSARINE_SANITIZE MATCHES undefined)
        # both compare type records by address, and host and module have a copy each
        add_compile_options(-fno-sanitize=vptr)
        if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
            add_compile_options(-fno-sanitize=function)
        endif()
    endif()
endif()

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

function(tessarine_settings target)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/frame/include)
endfunction()

# Precompiled headers, one for the floors and one for the tests, shared by all targets of a kind (object libraries only:
# programs are compiled as position-independent in another way). System headers only: a missing include of the project's
# own would go unseen.
set(_pch_system <algorithm> <array> <atomic> <cstdint> <cstring> <functional> <map> <memory> <string> <string_view>
                <utility> <vector>)

function(_make_precompiled name)
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${_pch_system} ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${name} PRIVATE -fpch-preprocess)  # ccache asks for it
    endif()
endfunction()

function(_use_precompiled target from)
    target_precompile_headers(${target} REUSE_FROM ${from})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()

function(tessarine_precompile target)
    if(TESSARINE_PCH)
        if(NOT TARGET tessarine_pch)
            _make_precompiled(tessarine_pch)
        endif()
        _use_precompiled(${target} tessarine_pch)
    endif()
endfunction()

function(tessarine_precompile_test target)
    if(TESSARINE_PCH)
        if(NOT TARGET tessarine_test_pch)
            _make_precompiled(tessarine_test_pch <gtest/gtest.h>)
            target_link_libraries(tessarine_test_pch PRIVATE GTest::gtest)
        endif()
        _use_precompiled(${target} tessarine_test_pch)
    endif()
endfunction()
