// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace lorvane {

/// The pill's own symbols, drawn on a grid of 24 by 24.
enum class PillIcon { microphone, globe, cross, exclamation, check };

void drawIcon(QPainter& painter, PillIcon icon, const QRectF& where, const QColor& colour);

} // namespace lorvane
