// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/WaveformIcon.h"

#include <QPainter>

namespace lorvane {

namespace {

constexpr QRgb ground = 0xff1b1710;
constexpr QRgb bars = 0xfffbf8f2;
constexpr QRgb accent = 0xffe2725b;

/// A bar by its middle and its height, on a grid of 24.
struct Bar {
    double middle;
    double height;
    QRgb colour;
};
constexpr std::array waveform{Bar{5.5, 5, bars}, Bar{8.75, 10, bars}, Bar{12, 15, accent},
                              Bar{15.25, 8, bars}, Bar{18.5, 4, bars}};
constexpr double grid = 24;
constexpr double barWidth = 2;
constexpr double cornerRadius = 5.5;

} // namespace

QImage waveformIcon(int size) {
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / grid, size / grid);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgba(ground));
    painter.drawRoundedRect(QRectF(1, 1, grid - 2, grid - 2), cornerRadius, cornerRadius);
    for (const Bar& bar : waveform) {
        painter.setBrush(QColor::fromRgba(bar.colour));
        const QRectF box(bar.middle - barWidth / 2, (grid - bar.height) / 2, barWidth, bar.height);
        painter.drawRoundedRect(box, barWidth / 2, barWidth / 2);
    }
    return image;
}

QIcon waveformIcon() {
    QIcon icon;
    for (const int size : waveformSizes) {
        icon.addPixmap(QPixmap::fromImage(waveformIcon(size)));
    }
    return icon;
}

} // namespace lorvane
