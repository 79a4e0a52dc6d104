# What needs widgets: the library nacelle_ui, the program, its data files and the portable folder.
add_library(nacelle_ui STATIC
    foundation/PopFrame.cpp foundation/PopFrame.h foundation/PopFrame.ui
    foundation/scale.h
    protocol/dataPacketAnalysis.cpp protocol/dataPacketAnalysis.h protocol/dataPacketAnalysis.ui
    shell/NacelleBench.cpp shell/NacelleBench.h shell/NacelleBench.ui
    shell/QMyTcpSocket.cpp shell/QMyTcpSocket.h
    shell/connectDevice.cpp shell/connectDevice.h shell/connectDevice.ui
    shell/framecut.cpp shell/framecut.h
    shell/history.cpp shell/history.h
    shell/links.cpp
    resources/resources.qrc
)
target_link_libraries(nacelle_ui PUBLIC nacelle_core
    Qt5::Widgets Qt5::Network Qt5::SerialPort Qt5::Concurrent)

add_executable(NacelleBench WIN32 shell/main.cpp)
target_link_libraries(NacelleBench PRIVATE nacelle_ui)

# The text files lie beside the program, in the build tree as in the installed folder.
add_custom_target(nacelle_data ALL
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${NACELLE_DATA} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    VERBATIM)
add_dependencies(NacelleBench nacelle_data)

install(TARGETS NacelleBench RUNTIME DESTINATION .)
install(FILES ${NACELLE_DATA} DESTINATION .)
