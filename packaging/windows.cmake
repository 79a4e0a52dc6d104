# What the programs need beside them on Windows: the toolkit's libraries and plugins, the compiler's
# runtime, FFmpeg's libraries. Whether that is all, scripts/check-imports.sh finds out.
foreach(module Core Gui Widgets Network SerialPort)
    install(FILES $<TARGET_FILE:Qt5::${module}> DESTINATION .)
endforeach()
# Without the second one, icons are the system's generic ones.
install(FILES $<TARGET_FILE:Qt5::QWindowsIntegrationPlugin> DESTINATION platforms)
install(FILES $<TARGET_FILE:Qt5::QICOPlugin> DESTINATION imageformats)

# The fourth is what the toolkit may have been built with.
foreach(library libgcc_s_seh-1 libstdc++-6 libwinpthread-1 zlib1)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll
        OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(EXISTS "${file}")
        install(FILES ${file} DESTINATION .)
    endif()
endforeach()

foreach(library avformat avcodec avutil swscale swresample)
    file(GLOB file ${NACELLE_avformat_INCLUDE}/../bin/${library}-*.dll)
    install(FILES ${file} DESTINATION .)
endforeach()
