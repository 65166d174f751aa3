# What `cmake --install` puts below the prefix: programs, the bundle, manual pages, headers, and the framework as a library
# with its CMake package.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(_include ${CMAKE_INSTALL_INCLUDEDIR}/tessarine)
set(_package ${CMAKE_INSTALL_LIBDIR}/cmake/Tessarine)

install(TARGETS talv-host talv-sim srfpack RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(_folder ${TESSARINE_COMPONENTS} ${TESSARINE_ENGINES})
    install(DIRECTORY "${CMAKE_BINARY_DIR}/${_folder}/" DESTINATION ${_folder} USE_SOURCE_PERMISSIONS)
endforeach()
file(GLOB _pages CONFIGURE_DEPENDS man/*.1)
install(FILES ${_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The platform's core and all floors below it in one archive. Classes register themselves, so that it must be linked
# whole: the package says so to whoever uses it.
tessarine_objects_of(tessarine_platform_core _objects)
file(WRITE ${CMAKE_BINARY_DIR}/tessarine.cpp "")
add_library(tessarine STATIC ${CMAKE_BINARY_DIR}/tessarine.cpp)
foreach(_object IN LISTS _objects)
    get_target_property(_type ${_object} TYPE)
    if(_type STREQUAL OBJECT_LIBRARY)
        target_sources(tessarine PRIVATE $<TARGET_OBJECTS:${_object}>)
    endif()
endforeach()
# what draws, for those who want it; whole too
add_library(tessarine_graphics STATIC $<TARGET_OBJECTS:tessarine_drawing> $<TARGET_OBJECTS:tessarine_platform_graphics>)
set_target_properties(tessarine_graphics PROPERTIES LINKER_LANGUAGE CXX)
# what secures connections, for those who want it
add_library(tessarine_openssl STATIC $<TARGET_OBJECTS:tessarine_network_openssl>)
set_target_properties(tessarine_openssl PROPERTIES LINKER_LANGUAGE CXX)
install(TARGETS tessarine tessarine_graphics tessarine_openssl ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

install(DIRECTORY pluginterfaces DESTINATION ${_include} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY base/source DESTINATION ${_include}/base FILES_MATCHING PATTERN "*.h")
install(DIRECTORY frame/include DESTINATION ${_include}/frame FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/TessarineConfig.cmake.in ${CMAKE_BINARY_DIR}/TessarineConfig.cmake
                              INSTALL_DESTINATION ${_package} PATH_VARS _include CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TessarineConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TessarineConfig.cmake ${CMAKE_BINARY_DIR}/TessarineConfigVersion.cmake
        DESTINATION ${_package})
