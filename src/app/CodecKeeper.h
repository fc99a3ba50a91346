// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/LoadedTakeCodec.h"
#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "core/Phase.h"

namespace lorvane {

/// Has the codec loaded by the time a take ends, since it is loaded while the user speaks, and lets it go
/// when no take has followed for a while. Main thread.
class CodecKeeper {
 public:
    static constexpr Duration patience = std::chrono::seconds(30);

    CodecKeeper(Clock& clock, LoadedTakeCodec& codec) : clock_(clock), codec_(codec) {}
    void follow(const Phase& phase);
    /// Blocks until what was begun has been loaded.
    void finishLoading() { loading_.drain(); }

 private:
    Clock& clock_;
    LoadedTakeCodec& codec_;
    SerialQueue loading_;
    Handle end_;
};

} // namespace lorvane
