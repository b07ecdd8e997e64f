// Pictures of any size and content through the preparation for the text
// reader: the first two bytes give the width, the rest are grey pixels.
#include "recognize/OcrPreparation.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 3)
        return 0;
    const int width = 1 + (data[0] | (data[1] << 8)) % 512;
    const std::size_t pixels = size - 2;
    const int height = int((pixels + std::size_t(width) - 1) / std::size_t(width));
    if (height > 512)
        return 0;
    QImage gray(width, height, QImage::Format_Grayscale8);
    gray.fill(255);
    for (std::size_t i = 0; i < pixels; ++i)
        gray.scanLine(int(i / std::size_t(width)))[i % std::size_t(width)] = data[2 + i];
    OcrPreparation::Options options;
    options.maxPixels = 1 << 20;
    const OcrPreparation::Prepared prepared = OcrPreparation::prepare(gray, options);
    if (!prepared.gray.isNull() && prepared.gray.format() != QImage::Format_Grayscale8)
        __builtin_trap();
    return 0;
}
