# Builds the library under the given target name. It is called twice: for the
# product and for the variant that the tests link.

file(GLOB_RECURSE TARVIX_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.cpp)
file(GLOB TARVIX_PLATFORM_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/*.cpp)
# The desktop in memory that tests work on is in no product build.
file(GLOB TARVIX_TESTFACE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/testing/*.cpp)
if(NOT WIN32)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(SDL2 REQUIRED IMPORTED_TARGET sdl2)
endif()

# fopen is reserved to the file module and the platform folder, see src/prefix.h.
set(TARVIX_MAY_FOPEN ${CMAKE_SOURCE_DIR}/src/core/file.cpp)
file(GLOB_RECURSE TARVIX_WIN_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/win/*.cpp)
set_property(SOURCE ${TARVIX_WIN_SOURCES} APPEND PROPERTY COMPILE_DEFINITIONS TARVIX_PLATFORM_CALLS)
set_property(SOURCE ${TARVIX_MAY_FOPEN} APPEND PROPERTY COMPILE_DEFINITIONS TARVIX_MAY_FOPEN)

# Reports work on a null object, so its tests of this must stay.
set_property(SOURCE ${CMAKE_SOURCE_DIR}/src/core/error.cpp APPEND PROPERTY COMPILE_OPTIONS
    -fno-delete-null-pointer-checks -fno-sanitize=null,alignment,vptr)

# Packing the fields of small records in wide registers makes their reader wait,
# and a sprite is copied in the time of a few such waits.
set_property(SOURCE ${CMAKE_SOURCE_DIR}/src/pictures/bitmapconvert.cpp ${CMAKE_SOURCE_DIR}/src/win/dibscreen.cpp
    APPEND PROPERTY COMPILE_OPTIONS -fno-tree-slp-vectorize)
# Their loops are a few instructions long: where these lie makes up to a half of their speed.
set_property(SOURCE ${CMAKE_SOURCE_DIR}/src/pictures/kernelrowsfast.cpp
    ${CMAKE_SOURCE_DIR}/src/screens/polygon.cpp ${CMAKE_SOURCE_DIR}/src/screens/screendraw.cpp
    APPEND PROPERTY COMPILE_OPTIONS -falign-loops=32)

set(TARVIX_WARNINGS -Wall -Wextra -Wno-unused-parameter -Wno-missing-field-initializers -Wno-char-subscripts)

function(tarvix_add_library name)
    add_library(${name} SHARED ${TARVIX_SOURCES})
    target_compile_definitions(${name} PRIVATE TARVIX_BUILD)
    target_include_directories(${name}
        PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>
        PRIVATE ${CMAKE_SOURCE_DIR}/src)
    # -fwrapv: arithmetic that is defined on 32 bits wraps there. Nobody replaces
    # single functions of the library, so its own calls are direct.
    target_compile_options(${name} PRIVATE
        ${TARVIX_WARNINGS} -fvisibility=hidden -fwrapv -fno-exceptions -fno-semantic-interposition
        -include ${CMAKE_SOURCE_DIR}/src/prefix.h -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_options(${name} PRIVATE -faligned-new=8)
    endif()
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    if(WIN32)
        set_target_properties(${name} PROPERTIES PREFIX "" RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
        target_link_libraries(${name} PRIVATE winmm gdi32 user32 shell32 ole32 uuid rpcrt4 ws2_32)
    else()
        add_library(${name}_platform OBJECT ${TARVIX_PLATFORM_SOURCES})
        target_include_directories(${name}_platform PRIVATE ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR})
        target_compile_options(${name}_platform PRIVATE
            ${TARVIX_WARNINGS} -fvisibility=hidden -fwrapv -fno-exceptions)
        target_compile_definitions(${name}_platform PRIVATE TARVIX_BUILD)
        if(name STREQUAL tarvix_testing)
            target_sources(${name}_platform PRIVATE ${TARVIX_TESTFACE_SOURCES})
            target_compile_definitions(${name}_platform PRIVATE TARVIX_TESTING)
        endif()
        target_link_libraries(${name}_platform PRIVATE PkgConfig::SDL2)
        target_sources(${name} PRIVATE $<TARGET_OBJECTS:${name}_platform>)
        target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
        target_link_libraries(${name} PRIVATE PkgConfig::SDL2)
        # clang's sanitizer runtime is linked into the program only.
        if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
            target_link_options(${name} PRIVATE -Wl,--no-undefined)
        endif()
        target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/tarvix.map)
    endif()
endfunction()
