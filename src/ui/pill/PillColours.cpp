// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillColours.h"

namespace lorvane {

PillColours PillColours::of(bool moreContrast) {
    PillColours colours{QColor(43, 37, 28, 240), QColor(27, 23, 16, 240),    QColor(244, 239, 230, 46),
                        QColor(244, 239, 230),   QColor(244, 239, 230, 199), QColor(244, 239, 230, 31),
                        QColor(139, 124, 240),   QColor(93, 76, 200),        QColor(79, 190, 141),
                        QColor(240, 173, 66),    QColor(240, 100, 82)};
    if (moreContrast) {
        colours.top = colours.bottom = Qt::black;
        colours.rim = colours.ink = colours.softInk = Qt::white;
        colours.highlight = QColor(255, 255, 255, 77);
        colours.recordingTop = colours.recordingBottom = QColor(70, 40, 190);
        colours.done = QColor(120, 255, 180);
        colours.warning = QColor(255, 210, 80);
        colours.error = QColor(255, 130, 110);
    }
    return colours;
}

} // namespace lorvane
