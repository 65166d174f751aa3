# Modules that tests and benchmarks load from disk, each on the interfaces alone.
include_guard()

file(WRITE ${CMAKE_BINARY_DIR}/emptymodule.cpp "")
foreach(_source tests/modules/testmodule.cpp ${CMAKE_BINARY_DIR}/emptymodule.cpp)
    cmake_path(GET _source STEM _name)
    add_library(${_name} MODULE ${_source})
    tessarine_settings(${_name})
    target_link_libraries(${_name} PRIVATE tessarine_interfaces)
    target_link_options(${_name} PRIVATE -Wl,-Bsymbolic)
    set_target_properties(${_name} PROPERTIES PREFIX "" SUFFIX ".so" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
endforeach()
