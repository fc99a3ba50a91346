// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillButtons.h"

#include "ui/pill/PillPainter.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace lorvane {

namespace {

constexpr double letterSize = 9.5;

} // namespace

PillButton::PillButton(QWidget* parent, const PillColours& colours)
    : QAbstractButton(parent), colours_(colours) {
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    hide();
}

void PillButton::setSymbol(PillIcon icon, double size) {
    icon_ = icon;
    iconSize_ = size;
    setText({});
    update();
}

void PillButton::setLetters(const QString& letters) {
    icon_.reset();
    setText(letters);
    update();
}

void PillButton::describe(const QString& what, const QString& value) {
    setToolTip(what);
    setAccessibleName(what);
    setAccessibleDescription(value);
}

void PillButton::setAppearance(double appearance) {
    appearance_ = std::clamp(appearance, 0.0, 1.0);
    update();
}

// The tip is drawn by the pill itself: Qt's own would stand on top of the controls.
bool PillButton::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        if (onTip) {
            onTip();
        }
        return true;
    }
    return QAbstractButton::event(event);
}

void PillButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(appearance_);
    const QRectF area(rect());
    if (underMouse()) {
        painter.fillPath(capsulePath(area.adjusted(1, 3, -1, -3)), colours_.highlight);
    }
    const QColor& ink = underMouse() ? colours_.ink : colours_.softInk;
    if (icon_) {
        const QRectF middle(area.center().x() - iconSize_ * 0.5, area.center().y() - iconSize_ * 0.5,
                            iconSize_, iconSize_);
        drawIcon(painter, *icon_, middle, ink);
    } else {
        painter.setFont(pillFont(letterSize, QFont::DemiBold, *this));
        painter.setPen(ink);
        painter.drawText(area, Qt::AlignCenter, text());
    }
}

void PillButton::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void PillButton::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
    if (onLeft) {
        onLeft();
    }
}

} // namespace lorvane
