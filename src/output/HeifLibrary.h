#pragma once

#include <libheif/heif.h>

// libheif, loaded the first time a HEIC picture is written or its size read,
// not when the program starts: with its encoders and decoders (x265, aom,
// dav1d, de265) it would add some 2 MB to every idle tray copy, which most
// never use. The functions are those of the header the program was built
// with, from the library version that header belongs to.
struct HeifLibrary {
    // Reading a picture's size.
    decltype(&heif_context_alloc) contextAlloc;
    decltype(&heif_context_free) contextFree;
    decltype(&heif_context_read_from_reader) contextReadFromReader;
    decltype(&heif_context_get_primary_image_handle) contextGetPrimaryImageHandle;
    decltype(&heif_image_handle_get_width) imageHandleGetWidth;
    decltype(&heif_image_handle_get_height) imageHandleGetHeight;
    decltype(&heif_image_handle_release) imageHandleRelease;
    // Writing a picture.
    decltype(&heif_context_get_encoder_for_format) contextGetEncoderForFormat;
    decltype(&heif_encoder_release) encoderRelease;
    decltype(&heif_encoder_set_lossy_quality) encoderSetLossyQuality;
    decltype(&heif_image_create) imageCreate;
    decltype(&heif_image_release) imageRelease;
    decltype(&heif_image_add_plane) imageAddPlane;
    decltype(&heif_image_get_plane) imageGetPlane;
    decltype(&heif_context_encode_image) contextEncodeImage;
    decltype(&heif_context_write) contextWrite;

    // Loaded at the first call, from any thread; null when the library or one
    // of its functions can't be found.
    static const HeifLibrary *loaded();
};
