// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/TakeCodec.h"

#include <map>
#include <optional>
#include <vector>

namespace lorvane {

/// Writes files of stated content. By default an eighth of the samples' size in AAC and half in FLAC.
class FakeTakeCodec final : public TakeCodec {
 public:
    struct Call {
        QByteArray samples;
        TakeSettings settings;
        QString path;
    };

    [[nodiscard]] Result<void, QString> writeFile(const QByteArray& samples, const TakeSettings& settings,
                                                  const QString& path) override;

    /// The next files of this format have this content.
    std::map<TakeFormat, QByteArray> content;
    /// Files of this format cannot be written, for the reason given.
    std::map<TakeFormat, QString> failures;
    /// Every file is gone before it can be read.
    bool losesFiles = false;
    std::vector<Call> calls;
};

} // namespace lorvane
