#include "PrivatePulse.h"

#include "videowriting/MediaClock.h"

#include <pulse/simple.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

PrivatePulse::PrivatePulse()
{
    if (system("command -v pulseaudio >/dev/null 2>&1") != 0) {
        reason_ = "pulseaudio is not installed (Debian package pulseaudio)";
        return;
    }
    std::string pattern = (std::filesystem::temp_directory_path() / "glimpso-pulse-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        reason_ = "no folder for the sound server";
        return;
    }
    folder_ = pattern;
    const std::string script = GLIMPSO_PRIVATE_PULSE;
    const std::string folder = folder_.string();
    const char *argv[] = {"bash", script.c_str(), folder.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    const int spawned = posix_spawnp(&pid_, "bash", &actions, nullptr, const_cast<char **>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        pid_ = -1;
        reason_ = "the sound server did not start";
        return;
    }
    // Ready once its socket is there.
    const auto socket = folder_ / "native";
    for (int i = 0; i < 200 && !std::filesystem::exists(socket); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (!std::filesystem::exists(socket)) {
        reason_ = "the sound server did not open its socket";
        return;
    }
    server_ = "unix:" + socket.string();
}

PrivatePulse::~PrivatePulse()
{
    kill();
    std::error_code ignored;
    if (!folder_.empty())
        std::filesystem::remove_all(folder_, ignored);
}

void PrivatePulse::kill()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
    }
}

PulsePlayer::PulsePlayer(const std::string &server, const char *sink, int channels) : channels_(channels)
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, 48000, std::uint8_t(channels)};
    // A short buffer: what is written is heard soon, and the latency is small.
    pa_buffer_attr attributes;
    attributes.maxlength = std::uint32_t(-1);
    attributes.tlength = std::uint32_t(pa_usec_to_bytes(60'000, &spec));
    attributes.prebuf = std::uint32_t(-1);
    attributes.minreq = std::uint32_t(-1);
    attributes.fragsize = std::uint32_t(-1);
    int error = 0;
    stream_ = pa_simple_new(server.empty() ? nullptr : server.c_str(), "glimpso tests", PA_STREAM_PLAYBACK, sink, "tone", &spec, nullptr,
                            &attributes, &error);
}

PulsePlayer::~PulsePlayer()
{
    if (stream_) {
        int error = 0;
        pa_simple_drain(static_cast<pa_simple *>(stream_), &error);
        pa_simple_free(static_cast<pa_simple *>(stream_));
    }
}

void PulsePlayer::write(const std::vector<float> &samples)
{
    auto *simple = static_cast<pa_simple *>(stream_);
    int error = 0;
    pa_simple_write(simple, samples.data(), samples.size() * sizeof(float), &error);
    written_ += (long long)(samples.size()) / channels_;
    // Everything written so far is heard `latency` from now: so frame 0 at
    // now + latency − written / rate.
    const pa_usec_t latency = pa_simple_get_latency(simple, &error);
    origins_.emplace_back(written_, videowriting::MediaClock::now() + double(latency) / 1e6 - double(written_) / 48000);
}

double PulsePlayer::heardAt(long long frame) const
{
    // The median of the estimates after the frame was written: a stall of the
    // server on the way (an underrun) shows in them.
    std::vector<double> estimates;
    for (const auto &[written, origin] : origins_)
        if (written > frame && written <= frame + 48000 / 5)
            estimates.push_back(origin);
    if (estimates.empty())
        return -1;
    std::nth_element(estimates.begin(), estimates.begin() + std::ptrdiff_t(estimates.size() / 2), estimates.end());
    return estimates[estimates.size() / 2] + double(frame) / 48000;
}

double PulsePlayer::latestHeardAt(long long frame) const
{
    return origins_.empty() ? -1 : origins_.back().second + double(frame) / 48000;
}
