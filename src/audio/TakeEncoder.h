// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/Take.h"
#include "audio/TakeCodec.h"
#include "base/Foundation.h"

#include <optional>

namespace lorvane {

struct TakeFolders {
    QString temporary;
    /// Where dumps go; empty when the user has none.
    QString downloads;
    /// Those of the system and its user.
    [[nodiscard]] static TakeFolders system();
};

/// Turns a take's PCM (16 kHz, mono, signed 16-bit) into the bytes that go on the wire: AAC, else FLAC, else
/// WAV. Works on the caller's thread and keeps nothing between two calls.
class TakeEncoder {
 public:
    /// Shorter PCM (a tenth of a second or less) is no take.
    static constexpr qsizetype minimumBytes = 3'201;

    TakeEncoder(const Foundation& foundation, TakeCodec& codec, TakeFolders folders = TakeFolders::system());

    /// Nothing only for PCM below the minimum.
    [[nodiscard]] std::optional<Take> encodeTake(const QByteArray& pcm) const;
    [[nodiscard]] static QByteArray makeWav(const QByteArray& pcm);
    /// For debugging: leaves the PCM as a WAV file in the user's downloads, if the preference says so.
    void dumpTake(const QByteArray& pcm, const QString& label) const;

 private:
    [[nodiscard]] std::optional<QByteArray> encodeFile(const QByteArray& pcm,
                                                       const TakeSettings& settings) const;
    [[nodiscard]] Result<QByteArray, QString>
    writeAndRead(const QByteArray& samples, const TakeSettings& settings, const QString& path) const;

    const Foundation foundation_;
    TakeCodec& codec_;
    TakeFolders folders_;
};

} // namespace lorvane
