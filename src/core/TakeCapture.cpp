// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TakeCapture.h"

namespace lorvane {

namespace {

/// A take must be longer than this.
constexpr Duration slip = std::chrono::milliseconds(350);

} // namespace

Result<void, MacRecorder::StartFailure> TakeCapture::begin() {
    parts_.clearParts();
    recorder_.onPart = [this](const QByteArray& pcm) { parts_.takePart(pcm); };
    return recorder_.start();
}

bool TakeCapture::isWorthSending() const {
    return recorder_.isRecording() && clock_.now() - recorder_.startedAt() > slip;
}

FinishedTake TakeCapture::finish() {
    FinishedTake finished;
    finished.seconds = seconds();
    recorder_.onPart = nullptr;
    const QByteArray pcm = recorder_.stop().value_or(QByteArray());
    AssembledTail tail = parts_.assembleTail(pcm);
    finished.take = parts_.encodeTake(tail.rest);
    finished.prefix = std::move(tail.prefix);
    return finished;
}

void TakeCapture::discard() {
    recorder_.onPart = nullptr;
    parts_.clearParts();
    recorder_.cancel();
}

} // namespace lorvane
