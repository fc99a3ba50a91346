// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseAudioEngineFactory.h"

#include "platform/linux/pulse/PulseAudioEngine.h"

namespace lorvane {

AudioAuthorisation PulseAudioEngineFactory::authorisation() const {
    return connection_.isRefused() ? AudioAuthorisation::denied : AudioAuthorisation::authorised;
}

std::unique_ptr<AudioEngine> PulseAudioEngineFactory::makeEngine() {
    return std::make_unique<PulseAudioEngine>(connection_);
}

} // namespace lorvane
