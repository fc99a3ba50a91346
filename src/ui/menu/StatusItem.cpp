// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/StatusItem.h"

#include "ui/menu/WaveformIcon.h"

#include <QtEndian>

namespace lorvane {

StatusItem::StatusItem(QObject* parent, std::function<void()> open)
    : QDBusAbstractAdaptor(parent), open_(std::move(open)) {
    registerTrayTypes();
}

StatusPixmaps StatusItem::iconPixmap() {
    StatusPixmaps pixmaps;
    for (const int size : waveformSizes) {
        const QImage image = waveformIcon(size);
        QByteArray bytes(image.sizeInBytes(), Qt::Uninitialized);
        qToBigEndian<quint32>(image.constBits(), image.width() * image.height(), bytes.data());
        pixmaps.append({size, size, bytes});
    }
    return pixmaps;
}

StatusToolTip StatusItem::toolTip() { return {{}, {}, title(), {}}; }

void StatusItem::Activate(int /*x*/, int /*y*/) { open_(); }
void StatusItem::SecondaryActivate(int /*x*/, int /*y*/) { open_(); }
// The host shows the menu itself, having been told where it is.
void StatusItem::ContextMenu(int /*x*/, int /*y*/) {}
void StatusItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

} // namespace lorvane
