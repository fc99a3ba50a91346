// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/TakeCodec.h"

namespace lorvane {

/// AAC and FLAC files by libavformat and libavcodec. The path's extension selects the container. Keeps no
/// state; any thread.
class AvTakeCodec final : public TakeCodec {
 public:
    AvTakeCodec();
    [[nodiscard]] Result<void, QString> writeFile(const QByteArray& samples, const TakeSettings& settings,
                                                  const QString& path) override;
};

} // namespace lorvane
