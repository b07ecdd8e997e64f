#include "videowriting/LeftoverRemuxer.h"

#include "videowriting/FFmpegVideoWriter.h"
#include "videowriting/FragmentScanner.h"
#include "videowriting/VideoWriter.h"

#include "MediaReadBack.h"
#include "SyntheticScene.h"
#include "WriterFixture.h"

#include <csignal>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using videowriting::FFmpegVideoWriter;
using videowriting::FragmentScanner;
using videowriting::MediaError;
using videowriting::SoundChunk;
using videowriting::VideoWriter;
namespace LeftoverRemuxer = videowriting::LeftoverRemuxer;

namespace {

class LeftoverRemuxerTest : public WriterFixture {
protected:
    // A finished recording of `seconds` at 30 fps, with sound.
    std::filesystem::path recording(double seconds)
    {
        FFmpegVideoWriter::Tuning tuning;
        tuning.maxPendingFrames = 10000;
        tuning.maxPendingWholeFrames = 10000;
        tuning.maxPendingSoundSeconds = 10000;
        auto o = options(160, 120);
        o.systemAudio = true;
        const auto path = folder / "whole.mp4";
        FFmpegVideoWriter writer(path, o, tuning);
        SyntheticScene scene(160, 120);
        // Sound comes along with the frames, as from a capture stream.
        std::int64_t at = 0;
        for (int i = 0; i < int(seconds * 30); ++i) {
            writer.append(scene.frame(i, i / 30.0));
            for (; at < std::int64_t((i + 1) * 48000 / 30); at += 480) {
                const auto samples = SyntheticScene::tone(440, 2, at, 480);
                writer.appendAudio(SoundChunk{samples, 2, 48000, double(at) / 48000}, false);
            }
        }
        writer.finish(seconds);
        return path;
    }

    std::filesystem::path cutCopy(const std::filesystem::path &from, std::uintmax_t size, const char *name)
    {
        const auto to = folder / name;
        std::filesystem::copy_file(from, to);
        std::filesystem::resize_file(to, size);
        return to;
    }
};

} // namespace

TEST_F(LeftoverRemuxerTest, AFinishedRecordingBecomesAPlainMP4WithAllItsPackets)
{
    const auto whole = recording(3.0);
    const auto result = LeftoverRemuxer::remux(whole, folder / "out.mp4");
    EXPECT_TRUE(result.wasComplete);
    EXPECT_NEAR(result.seconds, 3.0, 0.05);

    const auto before = MediaReadBack::probe(whole);
    const auto after = MediaReadBack::probe(folder / "out.mp4");
    ASSERT_NE(after.video(), nullptr);
    EXPECT_EQ(after.video()->packets, before.video()->packets);
    ASSERT_EQ(after.sound().size(), 1u);
    EXPECT_EQ(after.sound()[0]->packets, before.sound()[0]->packets);
    EXPECT_NEAR(after.duration, 3.0, 0.05);
    // A plain file: no fragments at all.
    const auto layout = FragmentScanner::scanFile(folder / "out.mp4");
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->fragments, 0);
    EXPECT_EQ(MediaReadBack::ffmpegErrors(folder / "out.mp4"), "");
}

TEST_F(LeftoverRemuxerTest, ARecordingCutAnywhereKeepsItsWholeFragments)
{
    const auto whole = recording(4.0);
    const auto size = std::filesystem::file_size(whole);
    double previous = 0;
    for (double share : {0.3, 0.55, 0.8, 0.97}) {
        const auto cut = cutCopy(whole, std::uintmax_t(double(size) * share), ("cut" + std::to_string(share)).c_str());
        const auto out = folder / ("out" + std::to_string(share) + ".mp4");
        const auto result = LeftoverRemuxer::remux(cut, out);
        EXPECT_FALSE(result.wasComplete);
        // Whole seconds survive: at least all but the fragment that was cut.
        EXPECT_GE(result.seconds, 4.0 * share - 1.1) << share;
        EXPECT_GE(result.seconds, previous) << share;
        previous = result.seconds;
        EXPECT_EQ(MediaReadBack::ffmpegErrors(out), "") << share;
        const auto facts = MediaReadBack::probe(out);
        ASSERT_NE(facts.video(), nullptr);
        EXPECT_NEAR(facts.duration, result.seconds, 0.05);
        ASSERT_EQ(facts.sound().size(), 1u);
    }
}

TEST_F(LeftoverRemuxerTest, AHeaderWithoutFragmentsHoldsNothing)
{
    const auto whole = recording(2.0);
    // Cut just after the movie header.
    std::uintmax_t moovEnd = 0;
    {
        std::ifstream in(whole, std::ios::binary);
        std::uint8_t h[8];
        std::uintmax_t offset = 0;
        while (in.read(reinterpret_cast<char *>(h), 8)) {
            const std::uint32_t boxSize = (std::uint32_t(h[0]) << 24) | (h[1] << 16) | (h[2] << 8) | h[3];
            offset += boxSize;
            if (std::string(reinterpret_cast<char *>(h) + 4, 4) == "moov") {
                moovEnd = offset;
                break;
            }
            in.seekg(std::streamoff(offset));
        }
    }
    ASSERT_GT(moovEnd, 0u);
    const auto headerOnly = cutCopy(whole, moovEnd + 20, "header.mp4");
    EXPECT_THROW(LeftoverRemuxer::remux(headerOnly, folder / "h-out.mp4"), MediaError);
}

TEST_F(LeftoverRemuxerTest, AFileThatIsNoMP4CantBeRecovered)
{
    std::ofstream(folder / "junk.mp4") << "this is no video at all, just words";
    EXPECT_THROW(LeftoverRemuxer::remux(folder / "junk.mp4", folder / "j-out.mp4"), MediaError);
    EXPECT_THROW(LeftoverRemuxer::remux(folder / "missing.mp4", folder / "m-out.mp4"), std::system_error);
}

TEST_F(LeftoverRemuxerTest, ARecordingKilledInTheMiddleComesBackWithAllButItsLastSecond)
{
    const auto path = folder / "killed.mp4";
    int out[2];
    ASSERT_EQ(pipe(out), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    const std::string tool = GLIMPSO_SYNTHETIC_RECORDER;
    std::vector<std::string> args = {tool, path.string(), "60", "--sound"};
    std::vector<char *> argv;
    for (auto &a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, tool.c_str(), &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    // Read its progress until it has recorded 4 seconds, then kill it.
    std::FILE *progress = fdopen(out[0], "r");
    char line[256];
    double recorded = 0;
    while (recorded < 4.0 && std::fgets(line, sizeof line, progress)) {
        int frame = 0;
        double at = 0;
        if (std::sscanf(line, "frame %d %lf", &frame, &at) == 2)
            recorded = at;
    }
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    std::fclose(progress);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_GE(recorded, 4.0);

    const auto result = LeftoverRemuxer::remux(path, folder / "recovered.mp4");
    EXPECT_FALSE(result.wasComplete);
    EXPECT_GE(result.seconds, recorded - 1.2);
    EXPECT_EQ(MediaReadBack::ffmpegErrors(folder / "recovered.mp4"), "");
    const auto facts = MediaReadBack::probe(folder / "recovered.mp4");
    ASSERT_EQ(facts.sound().size(), 1u);
    EXPECT_GE(facts.sound()[0]->end, recorded - 1.3);
}
