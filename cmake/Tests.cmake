# One test program for each target, from tests/<path of the target's files>/**/*_test.cpp, and the scripts.
#
# Labels: unit (fast), e2e (host and simulator on pseudo-terminals), x11 (wants a display), long (minutes).

find_package(GTest REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# What every test finds in its environment.
set(_suppressions ${CMAKE_SOURCE_DIR}/tests/suppressions)
set(TESSARINE_TEST_ENVIRONMENT
    TALV_BUILD_DIR=${CMAKE_BINARY_DIR}
    TALV_SOURCE_DIR=${CMAKE_SOURCE_DIR}
    TALV_SANITIZE=${TESSARINE_SANITIZE}
    FONTCONFIG_FILE=${CMAKE_SOURCE_DIR}/tests/support/fonts.conf
    "ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_init_order=1"
    "LSAN_OPTIONS=suppressions=${_suppressions}/lsan.txt:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1"
    # what was freed isn't kept aside: tests of module life count the heap to the byte
    "GLIBC_TUNABLES=glibc.malloc.tcache_count=0:glibc.malloc.mxfast=0"
    "TSAN_OPTIONS=suppressions=${_suppressions}/tsan.txt:second_deadlock_stack=1")

function(_test_properties name label timeout)
    set_tests_properties(${name} PROPERTIES LABELS ${label} TIMEOUT ${timeout}
                         ENVIRONMENT "${TESSARINE_TEST_ENVIRONMENT}")
endfunction()

function(_test_programs)
    file(GLOB_RECURSE support CONFIGURE_DEPENDS tests/support/*.cpp)
    add_library(tessarine_test_support OBJECT ${support})
    tessarine_settings(tessarine_test_support)
    target_link_libraries(tessarine_test_support PUBLIC GTest::gtest)

    file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}/tests tests/*_test.cpp)
    foreach(file IN LISTS files)
        tessarine_floor_of(${file} floor)
        if(NOT floor)
            message(WARNING "tests/${file} mirrors no file of cmake/floors.txt")
        else()
            list(APPEND sources_${floor} tests/${file})
        endif()
    endforeach()
    foreach(floor IN LISTS FLOORS)
        if(sources_${floor})
            _test_program(${floor} "${sources_${floor}}")
        endif()
    endforeach()
endfunction()

function(_test_program floor sources)
    string(REPLACE "-" "_" name ${floor}_test)
    tessarine_objects_of(${floor} objects)
    add_library(${name}_objects OBJECT ${sources})
    tessarine_settings(${name}_objects)
    target_link_libraries(${name}_objects PUBLIC GTest::gtest ${objects})
    tessarine_precompile_test(${name}_objects)
    add_executable(${name} $<TARGET_OBJECTS:${name}_objects>)
    target_link_libraries(${name} PRIVATE ${name}_objects tessarine_test_support ${objects})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    _test_properties(${name} unit 300)
endfunction()

# Text is read and written alike in every locale of a host: the same tests again in one of other letters and numbers. It is
# made here where the machine has its source, and the test is skipped where there is none.
function(_test_in_locale name locale filter)
    if(NOT TARGET ${name})
        return()
    endif()
    set(folder ${CMAKE_BINARY_DIR}/locale)
    find_program(LOCALEDEF localedef)
    if(LOCALEDEF AND NOT EXISTS ${folder}/${locale}.UTF-8)
        file(MAKE_DIRECTORY ${folder})
        execute_process(COMMAND ${LOCALEDEF} -i ${locale} -f UTF-8 ${folder}/${locale}.UTF-8 OUTPUT_QUIET ERROR_QUIET)
    endif()
    set(environment ${TESSARINE_TEST_ENVIRONMENT} TALV_TEST_LOCALE=${locale}.UTF-8)
    if(EXISTS ${folder}/${locale}.UTF-8)
        list(APPEND environment LOCPATH=${folder})
    endif()
    add_test(NAME ${name}.${locale} COMMAND ${name} --gtest_filter=${filter})
    set_tests_properties(${name}.${locale} PROPERTIES LABELS unit TIMEOUT 300 SKIP_RETURN_CODE 77
                         ENVIRONMENT "${environment}")
endfunction()

# A Python file is one test, or with BY_CLASS each of its classes is, so that they run side by side; a class that others
# derive from has a name in ...Test. They find the programs through TALV_BUILD_DIR.
function(_test_scripts pattern label timeout)
    file(GLOB scripts CONFIGURE_DEPENDS ${pattern})
    foreach(script IN LISTS scripts)
        cmake_path(GET script STEM name)
        cmake_path(GET script PARENT_PATH place)
        cmake_path(GET place FILENAME folder)
        set(classes "")
        if(ARGV3 STREQUAL BY_CLASS)
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
            file(STRINGS ${script} classes REGEX "^class [A-Za-z]+\\(.*Test\\):")
            list(TRANSFORM classes REPLACE "^class ([A-Za-z]+).*" "\\1")
            list(FILTER classes EXCLUDE REGEX "Test$")
        endif()
        if(NOT classes)
            add_test(NAME ${folder}.${name} COMMAND ${Python3_EXECUTABLE} -B -m unittest ${name}
                     WORKING_DIRECTORY ${place})
            _test_properties(${folder}.${name} ${label} ${timeout})
        endif()
        foreach(class IN LISTS classes)
            add_test(NAME ${folder}.${name}.${class} COMMAND ${Python3_EXECUTABLE} -B -m unittest ${name}.${class}
                     WORKING_DIRECTORY ${place})
            _test_properties(${folder}.${name}.${class} ${label} ${timeout})
        endforeach()
    endforeach()
endfunction()

enable_testing()
include(cmake/TestModules.cmake)
_test_programs()
if(TARGET talv_host_core_test)
    add_dependencies(talv_host_core_test talv_extension)  # it loads the bundle
endif()
if(TARGET tessarine_platform_core_test)
    add_dependencies(tessarine_platform_core_test testmodule emptymodule tessarine_lua)
endif()
foreach(locale de_DE tr_TR)
    _test_in_locale(tessarine_base_test ${locale} String*:FStreamer*:Buffer*)
    _test_in_locale(tessarine_foundation_test ${locale} *Text*:*String*:*Number*:*Date*:*Attribute*:*Xml*:CmVariant*:Expressions*)
    _test_in_locale(tessarine_platform_core_test ${locale} Scripts*)
endforeach()
_test_scripts(tests/tree/test_*.py unit 300)
_test_scripts(tests/e2e/test_*.py e2e 300 BY_CLASS)
_test_scripts(tests/e2e/long_*.py long 900)
