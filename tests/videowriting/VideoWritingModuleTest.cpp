#include "videowriting/VideoWritingModule.h"

#include "MediaReadBack.h"
#include "SyntheticScene.h"
#include "WriterFixture.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

using videowriting::VideoWriter;
using videowriting::VideoWritingModule;
using videowriting::WriterLog::Level;

namespace {
std::atomic<int> logLines = 0;
void countLog(Level, const char *)
{
    ++logLines;
}

class VideoWritingModuleTest : public WriterFixture {
protected:
    static const VideoWritingModule &module() { return VideoWritingModule::load(GLIMPSO_MODULE_DIR, countLog); }
};
} // namespace

TEST_F(VideoWritingModuleTest, AWriterFromTheModuleWritesAVideo)
{
    auto writer = module().openWriter(folder / "m.mp4", options(128, 96));
    SyntheticScene scene(128, 96);
    for (int i = 0; i < 5; ++i)
        writer->append(scene.frame(i, i / 30.0));
    EXPECT_EQ(writer->finish(5 / 30.0).videoFrames, 5);
    EXPECT_EQ(writer->url(), folder / "m.mp4");
    EXPECT_EQ(MediaReadBack::probe(folder / "m.mp4").video()->packets, 5);
}

TEST_F(VideoWritingModuleTest, TheWritersErrorsReachTheCallerAsThemselves)
{
    auto writer = module().openWriter(folder / "n.mp4", options(64, 64));
    try {
        writer->finish(1.0);
        FAIL() << "no error";
    } catch (const VideoWriter::WriterError &error) {
        EXPECT_EQ(error.which(), VideoWriter::WriterError::Case::noFrames);
        EXPECT_STREQ(error.what(), "Nothing was recorded.");
    }
}

TEST_F(VideoWritingModuleTest, AFolderThatCantBeWrittenIsAnErrorOfTheFile)
{
    try {
        module().openWriter(folder / "no" / "such" / "x.mp4", options(64, 64));
        FAIL() << "no error";
    } catch (const std::system_error &error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST_F(VideoWritingModuleTest, TheModuleRecoversLeftovers)
{
    {
        auto writer = module().openWriter(folder / "l.mp4", options(128, 96));
        SyntheticScene scene(128, 96);
        for (int i = 0; i < 5; ++i)
            writer->append(scene.frame(i, i / 30.0));
        writer->finish(5 / 30.0);
    }
    const auto result = module().remux(folder / "l.mp4", folder / "r.mp4");
    EXPECT_NEAR(result.seconds, 5 / 30.0, 0.01);
}

TEST(VideoWritingModuleLoad, AMissingModuleSaysItCouldntBeLoaded)
{
    // The module is loaded once per process: the missing one is tried in a
    // process of its own, the test program started afresh.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            try {
                VideoWritingModule::load("/nonexistent/glimpso");
            } catch (const std::runtime_error &error) {
                std::fputs(error.what(), stderr);
                std::exit(std::string(error.what()).find("The video writer couldn't be loaded") == 0 ? 0 : 1);
            }
            std::exit(2);
        },
        ::testing::ExitedWithCode(0), "The video writer couldn't be loaded: .*/nonexistent/glimpso");
}
