#pragma once

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

// libavformat, loaded the first time a video's length has to be read, not when
// the program starts. It brings a tree of codec libraries (libavcodec alone
// some ninety) that costs more to load and relocate than a whole listing whose
// sizes come from the cache, and most listings never need it. The functions
// are those of the headers the program was built with, from the library
// versions those headers belong to. (libheif, for HEIC sizes: HeifLibrary.)
class MediaLibraries
{
public:
    struct AvFormat {
        decltype(&av_find_input_format) findInputFormat;
        decltype(&avformat_alloc_context) allocContext;
        decltype(&avformat_open_input) openInput;
        decltype(&avformat_close_input) closeInput;
        decltype(&avio_alloc_context) ioAllocContext;
        decltype(&avio_context_free) ioContextFree;
        decltype(&av_malloc) malloc;
        decltype(&av_free) free;
        decltype(&av_freep) freep;
        decltype(&av_log_set_level) logSetLevel;
    };
    // Loaded at the first call, from any thread; null when the library or one
    // of its functions can't be found, and the reader then gives its zeros.
    static const AvFormat *avFormat();

    // libavformat logs nothing once loaded; the command line wants that, since a
    // damaged video is an ordinary case there. Takes effect also when called
    // before the library is loaded.
    static void quietAvFormatLog();
};
