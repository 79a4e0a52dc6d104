# Adds the taker of the pictures to a version of the program that is configured with
# CMAKE_PROJECT_NacelleBench_INCLUDE naming this file. Put off to the end of its CMakeLists.txt,
# where its library is there.
cmake_language(EVAL CODE
    "cmake_language(DEFER CALL include [[${CMAKE_CURRENT_LIST_DIR}/pagepictures.cmake]])")
