#include "videowriting/EncodingPipeline.h"

#include "videowriting/FragmentedMP4.h"
#include "videowriting/PictureConverter.h"
#include "videowriting/SoundEncoder.h"
#include "videowriting/VideoEncoder.h"
#include "videowriting/WriterLog.h"

#include <cmath>

namespace videowriting {

namespace {
constexpr std::int64_t systemSoundBitRate = 160'000;
constexpr std::int64_t microphoneBitRate = 96'000;
constexpr std::int64_t ticksPerSecond = 90'000;
// How much of a gap before a frame is made up with repeats: the gaps of a
// still screen are filled while they pass (FFmpegVideoWriter repeats while
// idle, a quarter second behind), so a longer gap means frames were dropped.
constexpr double gapMadeUpSeconds = 0.4;

std::unique_ptr<SoundEncoder> openSound(int channels, std::int64_t bitRate, const char *name)
{
    try {
        return std::make_unique<SoundEncoder>(channels, bitRate);
    } catch (const std::exception &error) {
        WriterLog::error(std::string("recording without the ") + name + " track: " + error.what());
        return nullptr;
    }
}
} // namespace

EncodingPipeline::EncodingPipeline(const std::filesystem::path &url, const VideoWriter::Options &options,
                                   double fragmentSeconds)
    : url_(url), fragmentSeconds_(fragmentSeconds), interval_(1.0 / std::max(options.framesPerSecond, 1)),
      width_(VideoWriter::encodedSide(options.width)),
      height_(VideoWriter::encodedSide(options.height)), held_(av_packet_alloc())
{
    std::error_code ignored;
    std::filesystem::remove(url, ignored);
    file_ = std::make_unique<FragmentedMP4>(url);
    video_ = std::make_unique<VideoEncoder>(options, width_, height_);
    videoTrack_ = file_->addTrack(video_->context());
    if (videoTrack_ < 0)
        throw VideoWriter::WriterError::cannotAddInput("video");
    if (options.systemAudio)
        sound_[0] = openSound(2, systemSoundBitRate, "system sound");
    if (options.microphone)
        sound_[1] = openSound(1, microphoneBitRate, "microphone");
    for (int t = 0; t < 2; ++t) {
        if (!sound_[t])
            continue;
        soundTrack_[t] = file_->addTrack(sound_[t]->context());
        if (soundTrack_[t] < 0) {
            sound_[t].reset();
            continue;
        }
    }
    file_->begin();
}

EncodingPipeline::~EncodingPipeline() = default;

bool EncodingPipeline::hasTrack(Track track) const
{
    return bool(sound_[int(track)]);
}

const std::string &EncodingPipeline::encoderName() const
{
    return video_->name();
}

std::int64_t EncodingPipeline::videoTicks(double seconds) const
{
    return std::llround((seconds - *firstSeconds_) * double(ticksPerSecond));
}

void EncodingPipeline::picture(std::span<const Patch> patches, double seconds)
{
    if (!firstSeconds_) {
        firstSeconds_ = seconds;
        for (auto &sound : sound_)
            if (sound)
                sound->start(seconds);
    } else {
        repeatUntil(seconds, int(std::ceil(gapMadeUpSeconds / interval_)));
    }
    if (!patches.empty()) {
        const YUVPlanes planes = video_->picture();
        for (const Patch &patch : patches) {
            // Converted as if the pixels were those of a whole picture.
            const std::uint8_t *origin = patch.pixels - std::ptrdiff_t(patch.rect.y) * patch.bytesPerLine -
                                         std::ptrdiff_t(patch.rect.x) * 4;
            PictureConverter::convert(origin, patch.bytesPerLine, patch.rect, planes);
        }
    }
    encodeAt(seconds);
}

void EncodingPipeline::repeatUntil(double seconds, int most)
{
    if (!firstSeconds_)
        return;
    // Frame times the stream left out lie a whole interval apart after the
    // last picture; one is due if it comes at least half an interval before
    // `seconds`.
    for (int done = 0; lastSeconds_ + interval_ * 1.5 <= seconds && (most < 0 || done < most); ++done)
        encodeAt(lastSeconds_ + interval_);
}

void EncodingPipeline::encodeAt(double seconds)
{
    std::int64_t pts = videoTicks(seconds);
    if (pts <= lastPts_)
        pts = lastPts_ + 1;
    lastPts_ = pts;
    lastSeconds_ = seconds;
    video_->encode(pts, [this](AVPacket *packet) { writeVideo(packet); });
}

void EncodingPipeline::writeVideo(AVPacket *packet)
{
    if (holding_)
        writeHeldVideo(packet->pts);
    av_packet_move_ref(held_.get(), packet);
    holding_ = true;
}

void EncodingPipeline::writeHeldVideo(std::int64_t until)
{
    AVPacket *packet = held_.get();
    packet->duration = std::max<std::int64_t>(until - packet->pts, 1);
    const std::int64_t pts = packet->pts;
    if (fragmentSeconds_ > 0 && pts >= nextCut_) {
        file_->cutFragment();
        const auto length = std::max<std::int64_t>(std::llround(fragmentSeconds_ * ticksPerSecond), 1);
        nextCut_ = (pts / length + 1) * length;
    }
    file_->write(packet, videoTrack_, VideoEncoder::timeBase);
    holding_ = false;
    if (fragmentSeconds_ <= 0)
        file_->cutFragment();
}

void EncodingPipeline::sound(const SoundChunk &chunk, Track track)
{
    SoundEncoder *encoder = sound_[int(track)].get();
    if (!encoder || !firstSeconds_)
        return;
    encoder->add(chunk, [this, track](AVPacket *packet) { writeSound(packet, track); });
}

void EncodingPipeline::writeSound(AVPacket *packet, Track track)
{
    // The encoder's lead-in, before 0, is left out: every track starts at the
    // first frame, and no player has to know about edit lists to keep sound
    // and pictures in step. The track begins with silence almost always (the
    // sound arrives later than the pictures), where the missing lead-in can't
    // be heard.
    if (packet->pts < 0)
        return;
    file_->write(packet, soundTrack_[int(track)], AVRational{1, SoundEncoder::sampleRate});
}

void EncodingPipeline::end(double endTime)
{
    const std::int64_t endPts = firstSeconds_ ? videoTicks(endTime) : 0;
    repeatUntil(endTime);
    video_->flush([this](AVPacket *packet) { writeVideo(packet); });
    if (holding_) {
        // The last frame lasts until the end, or a frame's time if the end
        // doesn't come after it.
        const std::int64_t frame = ticksPerSecond / std::max(1, video_->context()->framerate.num);
        writeHeldVideo(endPts > held_->pts ? endPts : held_->pts + frame);
    }
    for (int t = 0; t < 2; ++t)
        if (sound_[t] && firstSeconds_)
            sound_[t]->finish(endTime, [this, t](AVPacket *packet) { writeSound(packet, Track(t)); });
    file_->finish();
}

void EncodingPipeline::abandon()
{
    file_->abandon();
}

} // namespace videowriting
