// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

namespace lorvane {

/// The pill is dark on every desktop. The values are those of the program's theme; with more contrast they
/// are pure.
struct PillColours {
    QColor top;
    QColor bottom;
    QColor rim;
    QColor ink;
    QColor softInk;
    QColor highlight;
    QColor recordingTop;
    QColor recordingBottom;
    QColor done;
    QColor warning;
    QColor error;

    [[nodiscard]] static PillColours of(bool moreContrast);
};

} // namespace lorvane
