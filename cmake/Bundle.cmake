# Loadable bundles: each a folder with the shared object, its property list and its resources.

# Of the floors that are modules: name, identifier, folder of the bundle, and what the object shows.
set(BUNDLE_talv_extension "VOREN TALV Extension" com.voren.talv-extension ${TESSARINE_COMPONENTS}
    public.sdk/source/main/module.map)
set(BUNDLE_tessarine_lua "Lua Script Engine" com.tessarine.lua ${TESSARINE_ENGINES} public.sdk/source/main/entries.map)
set(BUNDLE_ARCH "${CMAKE_SYSTEM_PROCESSOR}-linux")

# The folder with the content of a floor's bundle.
function(tessarine_bundle_contents floor out)
    list(GET BUNDLE_${floor} 0 name)
    list(GET BUNDLE_${floor} 2 folder)
    set(${out} "${CMAKE_BINARY_DIR}/${folder}/${name}.bundle/Contents" PARENT_SCOPE)
endfunction()

function(tessarine_make_bundle floor)
    tessarine_bundle_contents(${floor} contents)
    list(GET BUNDLE_${floor} 0 BUNDLE_NAME)
    list(GET BUNDLE_${floor} 1 BUNDLE_IDENTIFIER)
    list(GET BUNDLE_${floor} 3 map)
    configure_file(cmake/Info.plist.in "${contents}/Info.plist" @ONLY)
    file(MAKE_DIRECTORY "${contents}/Resources")
    if(NOT FLOOR_${floor}_SOURCES)
        message(STATUS "${floor} has no source yet")
        return()
    endif()
    target_compile_definitions(${FLOOR_${floor}_OBJECTS} PRIVATE TALV_BUILD_MODULE)  # these sources show their classes
    tessarine_objects_of(${floor} objects)
    file(WRITE ${CMAKE_BINARY_DIR}/${floor}.cpp "")  # a library wants a source; the objects are the content
    add_library(${floor} MODULE ${CMAKE_BINARY_DIR}/${floor}.cpp)
    target_link_libraries(${floor} PRIVATE ${objects})
    target_link_options(${floor} PRIVATE -Wl,-Bsymbolic "LINKER:--version-script,${CMAKE_SOURCE_DIR}/${map}")
    if(NOT TESSARINE_SANITIZE)
        target_link_options(${floor} PRIVATE -Wl,--no-undefined)
    endif()
    set_target_properties(${floor} PROPERTIES
        PREFIX "" SUFFIX ".so" OUTPUT_NAME "${BUNDLE_NAME}"
        LIBRARY_OUTPUT_DIRECTORY "${contents}/${BUNDLE_ARCH}"
        LINK_DEPENDS ${CMAKE_SOURCE_DIR}/${map})
endfunction()

# The folder resources/<name> as one resource file of the bundle. srfpack runs where it is built; what is packed is the same on
# any machine.
function(tessarine_pack_resources name)
    tessarine_bundle_contents(talv_extension contents)
    set(file "${contents}/Resources/${name}.srf")
    set(folder ${CMAKE_SOURCE_DIR}/resources/${name})
    file(GLOB_RECURSE members CONFIGURE_DEPENDS LIST_DIRECTORIES true ${folder}/*)  # a folder changes when a member goes
    add_custom_command(OUTPUT "${file}" COMMAND srfpack create --compress ${folder} "${file}"
                       DEPENDS srfpack ${folder} ${members} VERBATIM)
    add_custom_target(${name}_resources ALL DEPENDS "${file}")
endfunction()
