#include "history/MediaLibraries.h"

#include "appbase/LibraryLoader.h"

#include <atomic>

namespace {

#define MEDIA_STRINGIFY_(x) #x
#define MEDIA_STRINGIFY(x) MEDIA_STRINGIFY_(x)
constexpr const char *avFormatName = "libavformat.so." MEDIA_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR);
constexpr const char *avUtilName = "libavutil.so." MEDIA_STRINGIFY(LIBAVUTIL_VERSION_MAJOR);

std::atomic<bool> avFormatQuiet = false;
std::atomic<const MediaLibraries::AvFormat *> avFormatLoaded = nullptr;

} // namespace

const MediaLibraries::AvFormat *MediaLibraries::avFormat()
{
    // The libraries stay loaded for the life of the process: their functions are kept.
    static const AvFormat *const loaded = []() -> const AvFormat * {
        static AvFormat table{};
        void *format = LibraryLoader::open(avFormatName);
        void *util = LibraryLoader::open(avUtilName);
        using L = LibraryLoader;
        const bool complete = L::resolve(format, "av_find_input_format", table.findInputFormat) &&
                              L::resolve(format, "avformat_alloc_context", table.allocContext) &&
                              L::resolve(format, "avformat_open_input", table.openInput) &&
                              L::resolve(format, "avformat_close_input", table.closeInput) &&
                              L::resolve(format, "avio_alloc_context", table.ioAllocContext) &&
                              L::resolve(format, "avio_context_free", table.ioContextFree) &&
                              L::resolve(util, "av_malloc", table.malloc) && L::resolve(util, "av_free", table.free) &&
                              L::resolve(util, "av_freep", table.freep) &&
                              L::resolve(util, "av_log_set_level", table.logSetLevel);
        if (!complete)
            return nullptr;
        if (avFormatQuiet)
            table.logSetLevel(AV_LOG_QUIET);
        avFormatLoaded = &table;
        return &table;
    }();
    return loaded;
}

void MediaLibraries::quietAvFormatLog()
{
    // Applied at the load, or now if that has happened; asking avFormat()
    // here would load the library, which is just what is avoided.
    avFormatQuiet = true;
    if (const AvFormat *library = avFormatLoaded)
        library->logSetLevel(AV_LOG_QUIET);
}
