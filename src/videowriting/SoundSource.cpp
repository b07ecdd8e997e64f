#include "videowriting/SoundSource.h"

namespace videowriting {

SoundSource::~SoundSource() = default;

} // namespace videowriting
