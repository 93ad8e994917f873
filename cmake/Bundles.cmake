# Lays out a bundle's resources in the build tree as in the installed one: Info.plist (with @VARIABLES@) in Contents/, all
# else in Contents/Resources/. `source` is a folder of the calling room. A shared object of the bundle is installed by its
# target.
function(orvan_bundle name source)
    set(contents ${CMAKE_BINARY_DIR}/${ORVAN_PRIVATE_DIR}/${name}/Contents)
    set(from ${CMAKE_CURRENT_SOURCE_DIR}/${source})
    file(GLOB_RECURSE resources CONFIGURE_DEPENDS RELATIVE ${from} ${from}/*)
    foreach(resource IN LISTS resources)
        if(resource STREQUAL "Info.plist")
            configure_file(${from}/Info.plist ${contents}/Info.plist @ONLY)
        else()
            configure_file(${from}/${resource} ${contents}/Resources/${resource} COPYONLY)
        endif()
    endforeach()
    install(DIRECTORY ${CMAKE_BINARY_DIR}/${ORVAN_PRIVATE_DIR}/${name} DESTINATION ${ORVAN_PRIVATE_DIR}
        PATTERN Linux EXCLUDE)
endfunction()
