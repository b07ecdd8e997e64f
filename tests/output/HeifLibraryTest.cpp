#include "output/HeifLibrary.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

TEST(HeifLibrary, LoadsAtTheFirstCallWithEveryFunction)
{
    const HeifLibrary *heif = HeifLibrary::loaded();
    ASSERT_NE(heif, nullptr);
    EXPECT_NE(heif->contextWrite, nullptr);
    EXPECT_NE(heif->imageHandleGetWidth, nullptr);
    EXPECT_EQ(HeifLibrary::loaded(), heif);
    // Its encoder answers: the library is the one the header belongs to.
    heif_context *context = heif->contextAlloc();
    ASSERT_NE(context, nullptr);
    heif_encoder *encoder = nullptr;
    EXPECT_EQ(heif->contextGetEncoderForFormat(context, heif_compression_HEVC, &encoder).code, heif_error_Ok);
    if (encoder)
        heif->encoderRelease(encoder);
    heif->contextFree(context);
}
