// The one symbol the sound capture's module exports (PulseModule).
#include "platform/pulse/PulseModule.h"
#include "platform/pulse/PulseSoundSource.h"

namespace {

std::unique_ptr<videowriting::SoundSource> makeSource(videowriting::SoundSource::Kind kind)
{
    return std::make_unique<PulseSoundSource>(kind);
}

const PulseEntry entry{PulseModule::version, makeSource};

} // namespace

extern "C" __attribute__((visibility("default"))) const PulseEntry *glimpso_pulse_entry()
{
    return &entry;
}
