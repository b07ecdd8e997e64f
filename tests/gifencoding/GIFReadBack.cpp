#include "GIFReadBack.h"

#include <gif_lib.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace GIFReadBack {

namespace {

struct Closer {
    void operator()(GifFileType *g) const { DGifCloseFile(g, nullptr); }
};

void paint(const SavedImage &image, const ColorMapObject &map, int width, int height,
           std::vector<std::uint8_t> &canvas)
{
    const GifImageDesc &d = image.ImageDesc;
    for (int y = 0; y < d.Height; ++y) {
        for (int x = 0; x < d.Width; ++x) {
            const int cx = d.Left + x;
            const int cy = d.Top + y;
            if (cx >= width || cy >= height)
                continue;
            const int index = image.RasterBits[y * d.Width + x];
            if (index >= map.ColorCount)
                throw std::runtime_error("pixel index outside the colour table");
            const GifColorType c = map.Colors[index];
            std::uint8_t *out = &canvas[(std::size_t(cy) * width + cx) * 3];
            out[0] = c.Red;
            out[1] = c.Green;
            out[2] = c.Blue;
        }
    }
}

int loopCountIn(const ExtensionBlock *blocks, int count)
{
    for (int i = 0; i + 1 < count; ++i) {
        const ExtensionBlock &b = blocks[i];
        if (b.Function == APPLICATION_EXT_FUNC_CODE && b.ByteCount == 11 &&
            std::string(reinterpret_cast<const char *>(b.Bytes), 11) == "NETSCAPE2.0") {
            const ExtensionBlock &sub = blocks[i + 1];
            if (sub.ByteCount >= 3 && sub.Bytes[0] == 1)
                return sub.Bytes[1] | (sub.Bytes[2] << 8);
        }
    }
    return -1;
}

// giflib files the extensions before an image with that image.
int loopCountOf(const GifFileType &gif)
{
    if (gif.ImageCount > 0) {
        const int n = loopCountIn(gif.SavedImages[0].ExtensionBlocks, gif.SavedImages[0].ExtensionBlockCount);
        if (n >= 0)
            return n;
    }
    return loopCountIn(gif.ExtensionBlocks, gif.ExtensionBlockCount);
}

bool hasControlBlock(const SavedImage &image)
{
    for (int i = 0; i < image.ExtensionBlockCount; ++i)
        if (image.ExtensionBlocks[i].Function == GRAPHICS_EXT_FUNC_CODE)
            return true;
    return false;
}

std::string run(const std::string &command)
{
    std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string out;
    char buffer[65536];
    std::size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe.get())) > 0)
        out.append(buffer, n);
    return out;
}

std::string quoted(const std::filesystem::path &p)
{
    return "'" + p.string() + "'";
}

} // namespace

Animation withGiflib(const std::filesystem::path &file)
{
    int error = 0;
    std::unique_ptr<GifFileType, Closer> gif(DGifOpenFileName(file.c_str(), &error));
    if (!gif)
        throw std::runtime_error(std::string("giflib cannot open: ") + GifErrorString(error));
    if (DGifSlurp(gif.get()) != GIF_OK)
        throw std::runtime_error(std::string("giflib cannot read: ") + GifErrorString(gif->Error));

    Animation a;
    a.width = gif->SWidth;
    a.height = gif->SHeight;
    a.loopCount = loopCountOf(*gif);
    std::vector<std::uint8_t> canvas(std::size_t(a.width) * a.height * 3, 0);
    for (int i = 0; i < gif->ImageCount; ++i) {
        const SavedImage &image = gif->SavedImages[i];
        const ColorMapObject *map = image.ImageDesc.ColorMap ? image.ImageDesc.ColorMap : gif->SColorMap;
        if (!map)
            throw std::runtime_error("frame without a colour table");
        GraphicsControlBlock gcb{};
        DGifSavedExtensionToGCB(gif.get(), i, &gcb);
        paint(image, *map, a.width, a.height, canvas);
        const GifImageDesc &d = image.ImageDesc;
        a.frames.push_back(Frame{gcb.DelayTime, canvas, d.Left, d.Top, d.Width, d.Height,
                                 hasControlBlock(image) ? gcb.DisposalMode : -1});
    }
    return a;
}

Animation withImageMagick(const std::filesystem::path &file)
{
    Animation a;
    std::istringstream info(run("identify -format '%W %H %T\\n' " + quoted(file) + " 2>/dev/null"));
    int delay = 0;
    while (info >> a.width >> a.height >> delay)
        a.frames.push_back(Frame{delay, {}});
    if (a.frames.empty())
        return a;
    const std::string raw =
        run("convert " + quoted(file) + " -coalesce -depth 8 rgb:- 2>/dev/null");
    const std::size_t frameSize = std::size_t(a.width) * a.height * 3;
    if (raw.size() != frameSize * a.frames.size())
        throw std::runtime_error("ImageMagick gave " + std::to_string(raw.size()) +
                                 " bytes for " + std::to_string(a.frames.size()) + " frames");
    for (std::size_t i = 0; i < a.frames.size(); ++i)
        a.frames[i].rgb.assign(raw.begin() + std::ptrdiff_t(i * frameSize),
                               raw.begin() + std::ptrdiff_t((i + 1) * frameSize));
    return a;
}

int largestDifference(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b)
{
    if (a.size() != b.size())
        return 256;
    int worst = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

double meanDifference(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b)
{
    if (a.size() != b.size() || a.empty())
        return 256;
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += std::abs(int(a[i]) - int(b[i]));
    return sum / double(a.size());
}

std::string giftext(const std::filesystem::path &file)
{
    return run("giftext " + quoted(file) + " 2>&1");
}

std::vector<std::uint8_t> readFile(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace GIFReadBack
