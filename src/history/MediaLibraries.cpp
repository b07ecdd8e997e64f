#include "history/MediaLibraries.h"

#include <atomic>

#include <dlfcn.h>

#if LIBHEIF_NUMERIC_VERSION >> 24 != 1
#error "libheif's library name below is that of its version 1"
#endif

namespace {

#define MEDIA_STRINGIFY_(x) #x
#define MEDIA_STRINGIFY(x) MEDIA_STRINGIFY_(x)
constexpr const char *avFormatName = "libavformat.so." MEDIA_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR);
constexpr const char *avUtilName = "libavutil.so." MEDIA_STRINGIFY(LIBAVUTIL_VERSION_MAJOR);
constexpr const char *heifName = "libheif.so.1";

std::atomic<bool> avFormatQuiet = false;
std::atomic<const MediaLibraries::AvFormat *> avFormatLoaded = nullptr;

// Looks every function up; false when one is missing, so that a half-loaded
// table is never used.
template <typename Function>
bool resolve(void *library, const char *name, Function &function)
{
    function = library ? reinterpret_cast<Function>(dlsym(library, name)) : nullptr;
    return function != nullptr;
}

} // namespace

const MediaLibraries::AvFormat *MediaLibraries::avFormat()
{
    // The libraries stay loaded for the life of the process: their functions are kept.
    static const AvFormat *const loaded = []() -> const AvFormat * {
        static AvFormat table{};
        void *format = dlopen(avFormatName, RTLD_NOW | RTLD_LOCAL);
        void *util = dlopen(avUtilName, RTLD_NOW | RTLD_LOCAL);
        const bool complete = resolve(format, "av_find_input_format", table.findInputFormat) &&
                              resolve(format, "avformat_alloc_context", table.allocContext) &&
                              resolve(format, "avformat_open_input", table.openInput) &&
                              resolve(format, "avformat_close_input", table.closeInput) &&
                              resolve(format, "avio_alloc_context", table.ioAllocContext) &&
                              resolve(format, "avio_context_free", table.ioContextFree) &&
                              resolve(util, "av_malloc", table.malloc) && resolve(util, "av_free", table.free) &&
                              resolve(util, "av_freep", table.freep) &&
                              resolve(util, "av_log_set_level", table.logSetLevel);
        if (!complete)
            return nullptr;
        if (avFormatQuiet)
            table.logSetLevel(AV_LOG_QUIET);
        avFormatLoaded = &table;
        return &table;
    }();
    return loaded;
}

const MediaLibraries::Heif *MediaLibraries::heif()
{
    static const Heif *const loaded = []() -> const Heif * {
        static Heif table{};
        void *library = dlopen(heifName, RTLD_NOW | RTLD_LOCAL);
        const bool complete = resolve(library, "heif_context_alloc", table.contextAlloc) &&
                              resolve(library, "heif_context_free", table.contextFree) &&
                              resolve(library, "heif_context_read_from_reader", table.contextReadFromReader) &&
                              resolve(library, "heif_context_get_primary_image_handle",
                                      table.contextGetPrimaryImageHandle) &&
                              resolve(library, "heif_image_handle_get_width", table.imageHandleGetWidth) &&
                              resolve(library, "heif_image_handle_get_height", table.imageHandleGetHeight) &&
                              resolve(library, "heif_image_handle_release", table.imageHandleRelease);
        return complete ? &table : nullptr;
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
