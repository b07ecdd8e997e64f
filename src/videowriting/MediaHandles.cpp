#include "videowriting/MediaHandles.h"

#include "videowriting/VideoWriter.h"

#include <system_error>

extern "C" {
#include <libavutil/error.h>
}

namespace videowriting {

void receivePackets(AVCodecContext *encoder, AVPacket *packet, const std::function<void(AVPacket *)> &sink,
                    const char *what)
{
    for (;;) {
        const int status = avcodec_receive_packet(encoder, packet);
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
            return;
        if (status < 0)
            throwMediaError(what, status);
        sink(packet);
        av_packet_unref(packet);
    }
}

std::string mediaErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

void throwMediaError(const std::string &what, int code)
{
    // AVERROR(e) is -e for the errno values.
    if (code < 0 && -code < 4096)
        throw std::system_error(-code, std::generic_category(), what);
    throw MediaError(what + ": " + mediaErrorText(code), code);
}

} // namespace videowriting
