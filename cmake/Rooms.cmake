# The build tree has the layout of the installed tree, so that every program finds its companions in
# the same way in both: programs in bin/, the plug-in bundle and the dialog's host in lib/orvan/.
set(ORVAN_PRIVATE_DIR lib/orvan)
set(ORVAN_GTK_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/gtk-3.0/modules)
set(ORVAN_GTK4_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/gtk-4.0/${GTK4_BINARY_VERSION}/printbackends)

add_library(OrvanFlags INTERFACE)
# What a shared object needs is what it calls, not what its rooms may call: applications open them.
target_link_options(OrvanFlags INTERFACE -Wl,--as-needed)
target_compile_options(OrvanFlags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# As distributions harden their packages: whatever is compiled here has it, in builds that people run.
if(CMAKE_BUILD_TYPE MATCHES "Rel" AND NOT ORVAN_FUZZ)
    target_compile_options(OrvanFlags INTERFACE -fstack-protector-strong -fstack-clash-protection -Wformat
        -Werror=format-security -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
        target_compile_options(OrvanFlags INTERFACE -fcf-protection)
    elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
        target_compile_options(OrvanFlags INTERFACE -mbranch-protection=standard)
    endif()
    target_link_options(OrvanFlags INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A source that is compiled together with others is taken for a header.
    target_compile_options(OrvanFlags INTERFACE -Wno-subobject-linkage)
endif()
if(ORVAN_SANITIZE)
    target_compile_options(OrvanFlags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer -O1)
    target_link_options(OrvanFlags INTERFACE -fsanitize=address,undefined)
endif()
if(ORVAN_FUZZ)
    target_compile_options(OrvanFlags INTERFACE -fsanitize=fuzzer-no-link,address,undefined
        -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(OrvanFlags INTERFACE -fsanitize=address,undefined)
endif()

# One room: a static library of the given sources whose headers are included as "Room/Header.h".
function(orvan_room name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC OrvanFlags ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
endfunction()
