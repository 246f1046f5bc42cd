# tarvix_make_font(TARGET OUT.xbf SIZE n FONT name [OPTIONS ...])
#
# Makes OUT.xbf when TARGET is built. A relative OUT lies beside TARGET's
# program. FONT is a file, or a name of fonts-dejavu-core such as
# DejaVuSans-Bold; OPTIONS are those of xbfmake.
#
#   tarvix_make_font(my_game fonts/title.xbf SIZE 16 FONT DejaVuSans-Bold OPTIONS --grey --outline)
#
# A cross build takes xbfmake from TARVIX_HOST_XBFMAKE or from
# build/linux-release, and builds it natively if it is in neither place.
set(TARVIX_HOST_XBFMAKE "" CACHE FILEPATH "xbfmake that runs on the machine that builds")
set(TARVIX_FONT_DIR /usr/share/fonts/truetype/dejavu CACHE PATH "Where fonts lie that are given by name")

function(tarvix_make_font target out)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "SIZE;FONT" "OPTIONS")
    if(NOT arg_SIZE OR NOT arg_FONT OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "tarvix_make_font takes a target, a file, SIZE, FONT and OPTIONS")
    endif()
    if(NOT IS_ABSOLUTE ${out})
        set(out ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${out})
    endif()
    set(font ${arg_FONT})
    if(NOT EXISTS ${font})
        set(font ${TARVIX_FONT_DIR}/${arg_FONT}.ttf)
    endif()
    if(NOT EXISTS ${font})
        message(FATAL_ERROR "There is no font ${arg_FONT}; install fonts-dejavu-core or set TARVIX_FONT_DIR")
    endif()
    if(CMAKE_CROSSCOMPILING OR NOT TARGET xbfmake)
        if(CMAKE_HOST_WIN32)
            message(FATAL_ERROR "Fonts are made with xbfmake, which needs FreeType here")
        endif()
        set(tool "${TARVIX_HOST_XBFMAKE}")
        set(needs "")
    else()
        set(tool $<TARGET_FILE:xbfmake>)
        set(needs xbfmake)
    endif()
    get_filename_component(folder ${out} DIRECTORY)
    list(JOIN arg_OPTIONS "|" options)
    add_custom_command(OUTPUT ${out}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${CMAKE_COMMAND} "-DTOOL=${tool}" -DSOURCES=${CMAKE_SOURCE_DIR} -DNATIVE=${CMAKE_BINARY_DIR}/native
            -DFONT=${font} -DOUT=${out} -DSIZE=${arg_SIZE} "-DOPTIONS=${options}"
            -P ${CMAKE_SOURCE_DIR}/cmake/make_font.cmake
        DEPENDS ${needs} ${font} ${CMAKE_SOURCE_DIR}/cmake/make_font.cmake
        COMMENT "Making ${out}" VERBATIM)
    string(MD5 name ${out})
    add_custom_target(${target}_font_${name} DEPENDS ${out})
    add_dependencies(${target} ${target}_font_${name})
endfunction()
