// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

namespace lorvane {

enum class TakeFormat { aac, flac };

/// How a take's file is made of 16-bit interleaved samples.
struct TakeSettings {
    TakeFormat format = TakeFormat::aac;
    int sampleRate = 16'000;
    int channels = 1;
    /// Bits a second; only with AAC.
    int bitRate = 0;
    /// Bits a sample; only with FLAC.
    int bitDepth = 0;
};

/// Writes compressed audio files: AAC in an MPEG-4 audio file, or a FLAC file. Any thread.
class TakeCodec {
 public:
    virtual ~TakeCodec() = default;
    /// Writes the samples (host order, an even number of bytes) as a complete file in place of the one at
    /// `path`. The failure is the system's description; the file may then hold anything.
    [[nodiscard]] virtual Result<void, QString>
    writeFile(const QByteArray& samples, const TakeSettings& settings, const QString& path) = 0;
};

} // namespace lorvane
