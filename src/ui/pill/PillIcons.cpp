// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillIcons.h"

#include <QPainter>
#include <QPainterPath>

namespace lorvane {

namespace {

constexpr double grid = 24;

void stroke(QPainter& painter, const QPainterPath& path, const QColor& colour, double width) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
}

void fill(QPainter& painter, const QPainterPath& path, const QColor& colour) {
    painter.fillPath(path, colour);
}

void drawMicrophone(QPainter& painter, const QColor& colour) {
    QPainterPath body;
    body.addRoundedRect(QRectF(8.2, 2, 7.6, 12.6), 3.8, 3.8);
    fill(painter, body, colour);
    QPainterPath stand;
    stand.moveTo(4.8, 11.2);
    stand.arcTo(QRectF(4.8, 4, 14.4, 14.4), 180, 180);
    stand.moveTo(12, 18.4);
    stand.lineTo(12, 22);
    stand.moveTo(8.4, 22);
    stand.lineTo(15.6, 22);
    stroke(painter, stand, colour, 2);
}

void drawGlobe(QPainter& painter, const QColor& colour) {
    QPainterPath lines;
    lines.addEllipse(QRectF(2.4, 2.4, 19.2, 19.2));
    lines.addEllipse(QRectF(7.8, 2.4, 8.4, 19.2));
    lines.moveTo(2.8, 12);
    lines.lineTo(21.2, 12);
    stroke(painter, lines, colour, 2);
}

void drawCross(QPainter& painter, const QColor& colour) {
    QPainterPath lines;
    lines.moveTo(6, 6);
    lines.lineTo(18, 18);
    lines.moveTo(18, 6);
    lines.lineTo(6, 18);
    stroke(painter, lines, colour, 2.8);
}

void drawExclamation(QPainter& painter, const QColor& colour) {
    QPainterPath disc;
    disc.addEllipse(QRectF(1, 1, 22, 22));
    QPainterPath mark;
    mark.addRoundedRect(QRectF(10.6, 5.6, 2.8, 8.6), 1.4, 1.4);
    mark.addEllipse(QRectF(10.4, 15.8, 3.2, 3.2));
    fill(painter, disc.subtracted(mark), colour);
}

void drawCheck(QPainter& painter, const QColor& colour) {
    QPainterPath disc;
    disc.addEllipse(QRectF(1, 1, 22, 22));
    fill(painter, disc, colour);
    QPainterPath mark;
    mark.moveTo(6.8, 12.6);
    mark.lineTo(10.6, 16.4);
    mark.lineTo(17.2, 8.6);
    stroke(painter, mark, QColor(27, 23, 16), 2.6);
}

} // namespace

void drawIcon(QPainter& painter, PillIcon icon, const QRectF& where, const QColor& colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(where.topLeft());
    painter.scale(where.width() / grid, where.height() / grid);
    switch (icon) {
    case PillIcon::microphone:
        drawMicrophone(painter, colour);
        break;
    case PillIcon::globe:
        drawGlobe(painter, colour);
        break;
    case PillIcon::cross:
        drawCross(painter, colour);
        break;
    case PillIcon::exclamation:
        drawExclamation(painter, colour);
        break;
    case PillIcon::check:
        drawCheck(painter, colour);
        break;
    }
    painter.restore();
}

} // namespace lorvane
