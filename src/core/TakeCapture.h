// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/MacRecorder.h"
#include "core/TakeParts.h"

namespace lorvane {

/// A take that has left the recorder. Without an encoded take only its prefix is sent.
struct FinishedTake {
    std::optional<Take> take;
    QString prefix;
    double seconds = 0;
    /// By which the backend knows what it was sent last of it; empty when it has not been sent.
    QString takeID = {};

    [[nodiscard]] bool isNothing() const { return !take && prefix.isEmpty(); }
};

/// The recorder and the parts of the take it records, from the press of the key to the encoded take. Main
/// thread.
class TakeCapture {
 public:
    TakeCapture(const Foundation& foundation, MacRecorder& recorder, TakeParts& parts)
        : clock_(foundation.clock), recorder_(recorder), parts_(parts) {}

    /// Also succeeds while the recorder still runs; the take then holds everything since it was started.
    [[nodiscard]] Result<void, MacRecorder::StartFailure> begin();
    /// Seconds since the recorder was started.
    [[nodiscard]] double seconds() const { return inSeconds(clock_.now() - recorder_.startedAt()); }
    /// Recording, and long enough to be more than a slip of the key.
    [[nodiscard]] bool isWorthSending() const;
    [[nodiscard]] FinishedTake finish();
    /// Throws the take away.
    void discard();
    void clearParts() { parts_.clearParts(); }

 private:
    Clock& clock_;
    MacRecorder& recorder_;
    TakeParts& parts_;
};

} // namespace lorvane
