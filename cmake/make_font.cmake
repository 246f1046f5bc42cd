# Run by tarvix_make_font: FONT, OUT, SIZE, OPTIONS between bars, TOOL or nothing,
# SOURCES, and NATIVE, the folder of a native build.
if(NOT EXISTS "${TOOL}")
    set(TOOL ${SOURCES}/build/linux-release/bin/xbfmake)
endif()
if(NOT EXISTS ${TOOL})
    set(TOOL ${NATIVE}/bin/xbfmake)
    # Two fonts may come here at once.
    file(MAKE_DIRECTORY ${NATIVE})
    file(LOCK ${NATIVE}/fonts.lock GUARD PROCESS)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCES} -B ${NATIVE} -G Ninja -DCMAKE_BUILD_TYPE=Release
            -DTARVIX_BUILD_TESTS=OFF -DTARVIX_BUILD_EXAMPLES=OFF
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${NATIVE} --target xbfmake
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(LOCK ${NATIVE}/fonts.lock RELEASE)
endif()
string(REPLACE "|" ";" OPTIONS "${OPTIONS}")
execute_process(COMMAND ${TOOL} ${FONT} ${OUT} --size ${SIZE} ${OPTIONS} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
