# The script, its fonts and its pictures lie in a folder beside the program.
set(folder ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/gallery_files)
tarvix_make_font(gallery gallery_files/text.xbf SIZE 12 FONT DejaVuSans OPTIONS --grey)
tarvix_make_font(gallery gallery_files/bold.xbf SIZE 12 FONT DejaVuSans-Bold OPTIONS --grey)
tarvix_make_font(gallery gallery_files/head.xbf SIZE 20 FONT DejaVuSans-Bold OPTIONS --grey --shadow)
add_custom_command(OUTPUT ${folder}/gallery.txt
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/gallery/gallery.txt ${folder}/gallery.txt
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/gallery/gallery.txt VERBATIM)
add_custom_target(gallery_script DEPENDS ${folder}/gallery.txt)
add_dependencies(gallery gallery_script)
# Elsewhere the program paints them at its first start.
if(NOT CMAKE_CROSSCOMPILING)
    add_custom_command(TARGET gallery POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${CMAKE_COMMAND} -E env SDL_VIDEODRIVER=dummy $<TARGET_FILE:gallery> --art ${folder} VERBATIM)
endif()
