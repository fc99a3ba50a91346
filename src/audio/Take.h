// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace lorvane {

/// An encoded take: a complete file of the format that `ext` names ("m4a", "flac" or "wav").
struct Take {
    QByteArray data;
    QString ext;
    friend bool operator==(const Take&, const Take&) = default;
};

} // namespace lorvane
