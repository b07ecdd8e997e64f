// Records the synthetic scene in real time, as a capture stream would hand it
// over: the test of a kill in the middle runs this and kills it, and the
// measurement of fragment lengths compares what each keeps.
//
//   videowriting_synthetic_recorder OUT SECONDS [--fps N] [--size WxH]
//       [--codec h264|hevc] [--sound] [--fragment SECONDS]
//
// Prints "recording" once the first frame is in, then "frame N T" every
// second (T on the media clock since the first frame).
#include "SyntheticScene.h"

#include "videowriting/FFmpegVideoWriter.h"
#include "videowriting/MediaClock.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

using namespace videowriting;

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s OUT SECONDS [--fps N] [--size WxH] [--codec C] [--sound] [--fragment S]\n",
                     argv[0]);
        return 2;
    }
    const std::string out = argv[1];
    const double seconds = std::stod(argv[2]);
    VideoWriter::Options options;
    options.width = 640;
    options.height = 360;
    options.framesPerSecond = 30;
    options.codec = VideoWriter::Codec::h264;
    FFmpegVideoWriter::Tuning tuning;
    for (int i = 3; i < argc; ++i) {
        const std::string arg = argv[i];
        const char *next = i + 1 < argc ? argv[i + 1] : "";
        if (arg == "--fps") {
            options.framesPerSecond = std::stoi(next);
            ++i;
        } else if (arg == "--size") {
            std::sscanf(next, "%dx%d", &options.width, &options.height);
            ++i;
        } else if (arg == "--codec") {
            options.codec = VideoWriter::codecFromName(next).value_or(VideoWriter::Codec::h264);
            ++i;
        } else if (arg == "--sound") {
            options.systemAudio = true;
        } else if (arg == "--fragment") {
            tuning.fragmentSeconds = std::stod(next);
            ++i;
        }
    }
    SyntheticScene scene(options.width, options.height);
    FFmpegVideoWriter writer(out, options, tuning);
    const double start = MediaClock::now();
    const double interval = 1.0 / options.framesPerSecond;
    std::int64_t soundFrames = 0;
    for (int index = 0;; ++index) {
        const double due = start + index * interval;
        if (due - start >= seconds)
            break;
        std::this_thread::sleep_for(std::chrono::duration<double>(due - MediaClock::now()));
        writer.append(scene.frame(index, due));
        if (options.systemAudio) {
            // The sound up to now, in 10 ms chunks.
            while (double(soundFrames) / 48000 < due - start) {
                const auto samples = SyntheticScene::tone(440, 2, soundFrames, 480);
                writer.appendAudio(SoundChunk{samples, 2, 48000, start + double(soundFrames) / 48000}, false);
                soundFrames += 480;
            }
        }
        if (index == 0)
            std::printf("recording\n");
        if (index % options.framesPerSecond == 0)
            std::printf("frame %d %.3f\n", index, due - start);
        std::fflush(stdout);
    }
    const auto stats = writer.finish(start + seconds);
    std::printf("finished %lld %lld\n", static_cast<long long>(stats.videoFrames),
                static_cast<long long>(stats.droppedFrames));
    return 0;
}
