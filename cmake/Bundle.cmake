# The loadable bundle: a folder with the shared object, its property list and its resources.

set(TALV_BUNDLE_NAME "VOREN TALV Extension")
set(TALV_BUNDLE_IDENTIFIER "com.voren.talv-extension")
set(TALV_BUNDLE_FOLDER "${TESSARINE_COMPONENTS}/${TALV_BUNDLE_NAME}.bundle/Contents")
set(TALV_BUNDLE_ARCH "${CMAKE_SYSTEM_PROCESSOR}-linux")

function(tessarine_make_bundle floor)
    set(contents "${CMAKE_BINARY_DIR}/${TALV_BUNDLE_FOLDER}")
    configure_file(cmake/Info.plist.in "${contents}/Info.plist" @ONLY)
    file(MAKE_DIRECTORY "${contents}/Resources")
    if(NOT FLOOR_${floor}_SOURCES)
        message(STATUS "${floor} has no source yet")
        return()
    endif()
    target_compile_definitions(${FLOOR_${floor}_OBJECTS} PRIVATE TALV_BUILD_MODULE)  # these sources show their classes
    tessarine_objects_of(${floor} objects)
    set(map ${CMAKE_SOURCE_DIR}/public.sdk/source/main/module.map)
    file(WRITE ${CMAKE_BINARY_DIR}/${floor}.cpp "")  # a library wants a source; the objects are the content
    add_library(${floor} MODULE ${CMAKE_BINARY_DIR}/${floor}.cpp)
    target_link_libraries(${floor} PRIVATE ${objects})
    target_link_options(${floor} PRIVATE -Wl,-Bsymbolic "LINKER:--version-script,${map}")
    if(NOT TESSARINE_SANITIZE)
        target_link_options(${floor} PRIVATE -Wl,--no-undefined)
    endif()
    set_target_properties(${floor} PROPERTIES
        PREFIX "" SUFFIX ".so" OUTPUT_NAME "${TALV_BUNDLE_NAME}"
        LIBRARY_OUTPUT_DIRECTORY "${contents}/${TALV_BUNDLE_ARCH}"
        LINK_DEPENDS ${map})
endfunction()

# The folder resources/<name> as one resource file of the bundle. srfpack runs where it is built; what is packed is the same on
# any machine.
function(tessarine_pack_resources name)
    set(file "${CMAKE_BINARY_DIR}/${TALV_BUNDLE_FOLDER}/Resources/${name}.srf")
    set(folder ${CMAKE_SOURCE_DIR}/resources/${name})
    file(GLOB_RECURSE members CONFIGURE_DEPENDS LIST_DIRECTORIES true ${folder}/*)  # a folder changes when a member goes
    add_custom_command(OUTPUT "${file}" COMMAND srfpack create --compress ${folder} "${file}"
                       DEPENDS srfpack ${folder} ${members} VERBATIM)
    add_custom_target(${name}_resources ALL DEPENDS "${file}")
endfunction()
