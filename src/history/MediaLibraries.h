#pragma once

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}
#include <libheif/heif.h>

// libavformat and libheif, loaded the first time a video's length or a HEIC
// picture's size has to be read, not when the program starts. Each brings a
// tree of codec libraries (libavcodec alone some ninety) that costs more to
// load and relocate than a whole listing whose sizes come from the cache, and
// most listings never need them. The functions are those of the headers the
// program was built with, from the library versions those headers belong to.
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
    struct Heif {
        decltype(&heif_context_alloc) contextAlloc;
        decltype(&heif_context_free) contextFree;
        decltype(&heif_context_read_from_reader) contextReadFromReader;
        decltype(&heif_context_get_primary_image_handle) contextGetPrimaryImageHandle;
        decltype(&heif_image_handle_get_width) imageHandleGetWidth;
        decltype(&heif_image_handle_get_height) imageHandleGetHeight;
        decltype(&heif_image_handle_release) imageHandleRelease;
    };

    // Loaded at the first call, from any thread; null when the library or one
    // of its functions can't be found, and the reader then gives its zeros.
    static const AvFormat *avFormat();
    static const Heif *heif();

    // libavformat logs nothing once loaded; the command line wants that, since a
    // damaged video is an ordinary case there. Takes effect also when called
    // before the library is loaded.
    static void quietAvFormatLog();
};
