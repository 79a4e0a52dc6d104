# What needs widgets: the library nacelle_ui, the program, its data files and the portable folder.
include(cmake/VideoLibraries.cmake)

add_library(nacelle_ui STATIC
    foundation/About.cpp foundation/About.h foundation/About.ui
    foundation/CellLabel.cpp foundation/CellLabel.h
    foundation/FormPanel.h foundation/FormRow.h
    foundation/FramelessWidget.cpp foundation/FramelessWidget.h
    foundation/digitfont.h
    foundation/PopFrame.cpp foundation/PopFrame.h foundation/PopFrame.ui
    foundation/formlook.cpp foundation/formlook.h
    foundation/relabel.cpp foundation/relabel.h
    foundation/readout.cpp foundation/readout.h
    console/flowAnalysis.cpp console/flowAnalysis.h console/flowAnalysis.ui
    protocol/HexLabel.cpp protocol/HexLabel.h
    protocol/controlCmd.cpp protocol/controlCmd.h protocol/controlCmd.ui
    protocol/dataPacketAnalysis.cpp protocol/dataPacketAnalysis.h protocol/dataPacketAnalysis.ui
    protocol/entryrules.cpp protocol/entryrules.h
    shell/LogDisplay.cpp shell/LogDisplay.h
    shell/NacelleBench.cpp shell/NacelleBench.h shell/NacelleBench.ui
    shell/QMyTcpSocket.cpp shell/QMyTcpSocket.h
    shell/connectDevice.cpp shell/connectDevice.h shell/connectDevice.ui
    shell/links.cpp shell/links.h
    shell/videolink.cpp shell/videolink.h
    video/VLCWidget.cpp video/VLCWidget.h
    video/VideoCodec.cpp video/VideoCodec.h
    video/ffmpeg.h
    video/videoFrom.cpp video/videoFrom.h video/videoFrom.ui
    video/vlc.h
    resources/resources.qrc
)
target_link_libraries(nacelle_ui PUBLIC nacelle_core
    Qt5::Widgets Qt5::Network Qt5::SerialPort Qt5::Concurrent
    nacelle_video_headers)
# The pages hold their generated forms by value.
target_include_directories(nacelle_ui PUBLIC ${CMAKE_BINARY_DIR}/nacelle_ui_autogen/include)

set_source_files_properties(foundation/About.cpp PROPERTIES
    COMPILE_DEFINITIONS NACELLE_VERSION="${PROJECT_VERSION}")

add_executable(NacelleBench WIN32 shell/main.cpp)
target_link_libraries(NacelleBench PRIVATE nacelle_ui)

# The text files lie beside the program, in the build tree as in the installed folder.
add_custom_target(nacelle_data ALL
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${NACELLE_DATA} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    VERBATIM)
add_dependencies(NacelleBench nacelle_data)
