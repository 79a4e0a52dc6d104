find_package(Qt5 5.15 REQUIRED COMPONENTS Test)
add_executable(pagepictures ${CMAKE_CURRENT_LIST_DIR}/pagepictures.cpp)
target_link_libraries(pagepictures PRIVATE nacelle_ui Qt5::Test)
