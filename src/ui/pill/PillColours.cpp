// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillColours.h"

namespace lorvane {

PillColours PillColours::of(bool moreContrast) {
    PillColours colours{QColor(43, 37, 28, 240), QColor(27, 23, 16, 240),    QColor(244, 239, 230, 46),
                        QColor(244, 239, 230),   QColor(244, 239, 230, 199), QColor(244, 239, 230, 31),
                        QColor(217, 107, 78),    QColor(180, 71, 47),        QColor(79, 190, 141),
                        QColor(240, 173, 66),    QColor(245, 78, 98)};
    if (moreContrast) {
        colours.top = colours.bottom = Qt::black;
        colours.rim = colours.ink = colours.softInk = Qt::white;
        colours.highlight = QColor(255, 255, 255, 77);
        colours.recordingTop = colours.recordingBottom = QColor(150, 40, 10);
        colours.done = QColor(120, 255, 180);
        colours.warning = QColor(255, 210, 80);
        colours.error = QColor(255, 120, 150);
    }
    return colours;
}

} // namespace lorvane
