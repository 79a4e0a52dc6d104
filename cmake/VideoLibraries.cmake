# The target nacelle_video_headers: those of FFmpeg and libVLC. The program loads the libraries
# themselves when it plays its first picture; that they are there is looked at here all the same.
add_library(nacelle_video_headers INTERFACE)
foreach(component
        FFMPEG:libavformat/avformat.h:avformat FFMPEG:libavcodec/avcodec.h:avcodec
        FFMPEG:libavutil/avutil.h:avutil FFMPEG:libswscale/swscale.h:swscale VLC:vlc/vlc.h:vlc)
    string(REPLACE ":" ";" parts ${component})
    list(POP_FRONT parts package header library)
    find_path(NACELLE_${library}_INCLUDE ${header} HINTS ${NACELLE_${package}_ROOT}/include)
    find_library(NACELLE_${library}_LIBRARY NAMES ${library} lib${library}
        HINTS ${NACELLE_${package}_ROOT}/lib)
    if(NOT NACELLE_${library}_INCLUDE OR NOT NACELLE_${library}_LIBRARY)
        message(FATAL_ERROR "${header} or the library ${library} isn't found. Where it lies, with "
            "the folders include and lib, can be said by -DNACELLE_${package}_ROOT=folder.")
    endif()
    target_include_directories(nacelle_video_headers SYSTEM INTERFACE ${NACELLE_${library}_INCLUDE})
endforeach()
