#pragma once

#include "videowriting/VideoWriter.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <cstdio>
#include <cstdlib>
#include <string>

// A folder of its own for each test, removed after it.
class WriterFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "glimpso-videowriting-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    // GLIMPSO_KEEP_TEST_FILES=1 keeps the files for a look by hand.
    void TearDown() override
    {
        if (std::getenv("GLIMPSO_KEEP_TEST_FILES")) {
            std::printf("kept %s\n", folder.c_str());
            return;
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    static videowriting::VideoWriter::Options options(int width, int height, int fps = 30,
                                                      videowriting::VideoWriter::Codec codec =
                                                          videowriting::VideoWriter::Codec::h264)
    {
        videowriting::VideoWriter::Options o;
        o.width = width;
        o.height = height;
        o.framesPerSecond = fps;
        o.codec = codec;
        return o;
    }

    std::filesystem::path folder;
};
