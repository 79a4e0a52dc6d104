# The target nacelle_video_headers: those of FFmpeg and libVLC. The program loads the libraries
# themselves when it plays its first picture; that they are there is looked at here all the same.
add_library(nacelle_video_headers INTERFACE)
foreach(component
        libavformat/avformat.h:avformat libavcodec/avcodec.h:avcodec libavutil/avutil.h:avutil
        libswscale/swscale.h:swscale vlc/vlc.h:vlc)
    string(REPLACE ":" ";" parts ${component})
    list(GET parts 0 header)
    list(GET parts 1 library)
    find_path(NACELLE_${library}_INCLUDE ${header} REQUIRED)
    find_library(NACELLE_${library}_LIBRARY NAMES ${library} lib${library} REQUIRED)
    target_include_directories(nacelle_video_headers SYSTEM INTERFACE ${NACELLE_${library}_INCLUDE})
endforeach()
