#include "output/HeifLibrary.h"

#include "appbase/LibraryLoader.h"

#if LIBHEIF_NUMERIC_VERSION >> 24 != 1
#error "libheif's library name below is that of its version 1"
#endif

const HeifLibrary *HeifLibrary::loaded()
{
    static const HeifLibrary *const library = []() -> const HeifLibrary * {
        static HeifLibrary table{};
        void *heif = LibraryLoader::open("libheif.so.1");
        using L = LibraryLoader;
        const bool complete =
            L::resolve(heif, "heif_context_alloc", table.contextAlloc) &&
            L::resolve(heif, "heif_context_free", table.contextFree) &&
            L::resolve(heif, "heif_context_read_from_reader", table.contextReadFromReader) &&
            L::resolve(heif, "heif_context_get_primary_image_handle", table.contextGetPrimaryImageHandle) &&
            L::resolve(heif, "heif_image_handle_get_width", table.imageHandleGetWidth) &&
            L::resolve(heif, "heif_image_handle_get_height", table.imageHandleGetHeight) &&
            L::resolve(heif, "heif_image_handle_release", table.imageHandleRelease) &&
            L::resolve(heif, "heif_context_get_encoder_for_format", table.contextGetEncoderForFormat) &&
            L::resolve(heif, "heif_encoder_release", table.encoderRelease) &&
            L::resolve(heif, "heif_encoder_set_lossy_quality", table.encoderSetLossyQuality) &&
            L::resolve(heif, "heif_image_create", table.imageCreate) &&
            L::resolve(heif, "heif_image_release", table.imageRelease) &&
            L::resolve(heif, "heif_image_add_plane", table.imageAddPlane) &&
            L::resolve(heif, "heif_image_get_plane", table.imageGetPlane) &&
            L::resolve(heif, "heif_context_encode_image", table.contextEncodeImage) &&
            L::resolve(heif, "heif_context_write", table.contextWrite);
        return complete ? &table : nullptr;
    }();
    return library;
}
