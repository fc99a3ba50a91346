// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/testing/FakeTakeCodec.h"

#include <QFile>

namespace lorvane {

Result<void, QString> FakeTakeCodec::writeFile(const QByteArray& samples, const TakeSettings& settings,
                                               const QString& path) {
    calls.push_back({samples, settings, path});
    if (const auto reason = failures.find(settings.format); reason != failures.end()) {
        return failure(reason->second);
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return failure(file.errorString());
    }
    const auto stated = content.find(settings.format);
    const qsizetype size = settings.format == TakeFormat::aac ? samples.size() / 8 : samples.size() / 2;
    file.write(stated != content.end() ? stated->second : QByteArray(size, 'x'));
    file.close();
    if (losesFiles) {
        file.remove();
    }
    return {};
}

} // namespace lorvane
