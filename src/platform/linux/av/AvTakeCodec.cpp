// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/av/AvTakeCodec.h"

#include "platform/linux/av/AvFile.h"

#include <QFile>

namespace lorvane {

// The libraries print their own remarks to the console; what matters comes back as a failure.
AvTakeCodec::AvTakeCodec() { av_log_set_level(AV_LOG_QUIET); }

Result<void, QString> AvTakeCodec::writeFile(const QByteArray& samples, const TakeSettings& settings,
                                             const QString& path) {
    try {
        AvFile file(settings, QFile::encodeName(path));
        file.write(reinterpret_cast<const std::int16_t*>(samples.constData()),
                   static_cast<std::size_t>(samples.size()) / sizeof(std::int16_t));
        file.close();
        return {};
    } catch (const AvError& error) {
        return failure(QString::fromUtf8(error.what()));
    }
}

} // namespace lorvane
