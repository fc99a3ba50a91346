// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillPainter.h"

#include "ui/pill/PillGeometry.h"
#include "ui/pill/PillIcons.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace lorvane {

namespace {

using pillLayout::barWidth;
using pillLayout::Content;

constexpr double textSize = 11.5;
constexpr double largestRadius = 14;
constexpr double iconSize = 12;
constexpr double cancelSize = 22;
constexpr double progressGap = 9;
constexpr double gap = 7;
constexpr double padding = 4;
/// What the measure of a notice leaves at each side of its icon and text.
constexpr double noticeMargin = 7;
constexpr double smallRadius = 8;
constexpr double tipHeight = 24;
constexpr double tipMargin = 10;
constexpr double tipDistance = 6;

double widthOf(const QPainter& painter, const QString& text) {
    return QFontMetricsF(painter.font()).horizontalAdvance(text);
}

QRectF square(double x, double middle, double size) { return {x, middle - size * 0.5, size, size}; }

QColor faded(QColor colour, double by) {
    colour.setAlphaF(static_cast<float>(colour.alphaF() * by));
    return colour;
}

} // namespace

QFont pillFont(double size, QFont::Weight weight, const QPaintDevice& device) {
    constexpr double pointsPerInch = 72;
    QFont font;
    font.setPointSizeF(size * pointsPerInch / device.logicalDpiY());
    font.setWeight(weight);
    return font;
}

QFont pillTextFont(const QPaintDevice& device) { return pillFont(textSize, QFont::Medium, device); }

QPainterPath capsulePath(const QRectF& capsule) {
    const double radius = std::min(capsule.height() * 0.5, largestRadius);
    QPainterPath path;
    path.addRoundedRect(capsule, radius, radius);
    return path;
}

QPainterPath tipPath(const QRectF& area) {
    QPainterPath path;
    path.addRoundedRect(area, smallRadius, smallRadius);
    return path;
}

void PillPainter::draw(const PillPicture& picture) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setFont(pillTextFont(*painter_.device()));
    drawCapsule(picture);
    drawTip(picture);
    painter_.setClipPath(capsulePath(picture.capsule), Qt::IntersectClip);
    painter_.setOpacity(std::clamp(picture.appearance, 0.0, 1.0));
    switch (picture.content) {
    case Content::restingBars:
        return drawRestingBars(picture.capsule);
    case Content::wave:
        return drawWave(picture);
    case Content::progress:
        return drawProgress(picture);
    case Content::done:
        return drawDone(picture);
    case Content::notice:
        return drawNotice(picture);
    case Content::controls:
        return;
    }
}

QRectF PillPainter::cancelArea(const QRectF& capsule) {
    return {capsule.right() - cancelSize - 2, capsule.center().y() - cancelSize * 0.5, cancelSize,
            cancelSize};
}

// Rings of faint black that fade out: no blur is needed for so small a shadow.
void PillPainter::drawShadow(const QRectF& capsule) {
    constexpr int rings = 6;
    for (int ring = rings; ring > 0; --ring) {
        const double out = ring * 1.1;
        painter_.fillPath(capsulePath(capsule.adjusted(-out, -out, out, out).translated(0, 1.5)),
                          QColor(0, 0, 0, 5 + 3 * (rings - ring)));
    }
}

void PillPainter::drawCapsule(const PillPicture& picture) {
    const bool isRecording = picture.content == Content::wave;
    QLinearGradient fill(picture.capsule.topLeft(), picture.capsule.bottomLeft());
    fill.setColorAt(0, isRecording ? colours_.recordingTop : colours_.top);
    fill.setColorAt(1, isRecording ? colours_.recordingBottom : colours_.bottom);
    if (picture.isComposited) {
        drawShadow(picture.capsule);
    } else {
        painter_.fillRect(picture.capsule.adjusted(-2, -2, 2, 2), Qt::black);
    }
    painter_.fillPath(capsulePath(picture.capsule), fill);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(colours_.rim, 1));
    painter_.drawPath(capsulePath(picture.capsule.adjusted(0.5, 0.5, -0.5, -0.5)));
}

void PillPainter::drawBar(double x, double middle, double height, const QColor& colour) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(colour);
    painter_.drawRoundedRect(QRectF(x, middle - height * 0.5, barWidth, height), barWidth * 0.5,
                             barWidth * 0.5);
}

void PillPainter::drawRestingBars(const QRectF& capsule) {
    constexpr auto count = std::size(pillLayout::restingHeights);
    double x = capsule.center().x() - (2 * count - 1) * barWidth * 0.5;
    for (const double height : pillLayout::restingHeights) {
        drawBar(x, capsule.center().y(), height, colours_.softInk);
        x += 2 * barWidth;
    }
}

void PillPainter::drawWave(const PillPicture& picture) {
    double x = picture.capsule.center().x() - (2 * WaveModel::count - 1) * barWidth * 0.5;
    for (const double bar : picture.bars) {
        drawBar(x, picture.capsule.center().y(), barWidth + bar * pillLayout::waveReach, colours_.ink);
        x += 2 * barWidth;
    }
}

void PillPainter::drawSpinner(const QRectF& where, double turn) {
    constexpr double degrees = 360 * 16; // as drawArc counts
    const QRectF ring = where.adjusted(1, 1, -1, -1);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(faded(colours_.ink, 0.2), 1.8));
    painter_.drawEllipse(ring);
    painter_.setPen(QPen(colours_.ink, 1.8, Qt::SolidLine, Qt::RoundCap));
    painter_.drawArc(ring, static_cast<int>((0.25 - turn) * degrees), static_cast<int>(-0.28 * degrees));
}

// Spinner and label stand in the middle of what the button leaves.
void PillPainter::drawProgress(const PillPicture& picture) {
    const QRectF& capsule = picture.capsule;
    const double room = cancelArea(capsule).left() - capsule.left();
    const double longest = room - 2 * padding - iconSize - progressGap;
    const double width = std::min(widthOf(painter_, picture.text) + 1, longest);
    const double x = capsule.left() + (room - iconSize - progressGap - width) * 0.5 + padding * 0.5;
    const double middle = capsule.center().y();
    drawSpinner(square(x, middle, iconSize), picture.turn);
    drawText({x + iconSize + progressGap, capsule.top(), width, capsule.height()}, picture.text,
             colours_.softInk, false);
}

void PillPainter::drawDone(const PillPicture& picture) {
    const QRectF& capsule = picture.capsule;
    const double longest = capsule.width() - 4 * padding - iconSize - gap;
    const double width = std::min(widthOf(painter_, picture.text) + 1, longest);
    const double x = capsule.center().x() - (iconSize + gap + width) * 0.5;
    const double size = iconSize * picture.pop;
    const QRectF mark = square(x + (iconSize - size) * 0.5, capsule.center().y(), size);
    drawIcon(painter_, PillIcon::check, mark, colours_.done);
    drawText({x + iconSize + gap, capsule.top(), width, capsule.height()}, picture.text, colours_.ink, false);
}

QRectF PillPainter::tipArea(const QString& tip, double middle, const QRectF& capsule,
                            const QPaintDevice& device) {
    const double width =
        std::ceil(QFontMetricsF(pillTextFont(device)).horizontalAdvance(tip)) + 2 * tipMargin;
    const double farthest = std::max(0.0, pillGeometry::panelWidth - width);
    return {std::clamp(middle - width * 0.5, 0.0, farthest), capsule.top() - tipDistance - tipHeight, width,
            tipHeight};
}

void PillPainter::drawTip(const PillPicture& picture) {
    if (picture.tip.isEmpty()) {
        return;
    }
    painter_.fillPath(tipPath(picture.tipArea), colours_.bottom);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(colours_.rim, 1));
    painter_.drawPath(tipPath(picture.tipArea.adjusted(0.5, 0.5, -0.5, -0.5)));
    drawText(picture.tipArea.adjusted(tipMargin, 0, -tipMargin, 0), picture.tip, colours_.ink, false);
}

void PillPainter::drawNotice(const PillPicture& picture) {
    const QRectF inner = picture.capsule.adjusted(noticeMargin, 0, -noticeMargin, 0);
    const bool twoLines = pillLayout::isTwoLines(picture.capsule.size());
    const double longest = inner.width() - iconSize - gap;
    const double width = twoLines ? longest : std::min(widthOf(painter_, picture.text) + 1, longest);
    const double x = inner.left() + (inner.width() - iconSize - gap - width) * 0.5;
    drawIcon(painter_, PillIcon::exclamation, square(x, inner.center().y(), iconSize),
             picture.severity == NoticeSeverity::error ? colours_.error : colours_.warning);
    drawText({x + iconSize + gap, inner.top(), width, inner.height()}, picture.text, colours_.ink, twoLines);
}

void PillPainter::drawText(const QRectF& where, const QString& text, const QColor& colour, bool twoLines) {
    const QFontMetricsF metrics(painter_.font());
    painter_.setPen(colour);
    if (!twoLines) {
        painter_.drawText(where, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                          metrics.elidedText(text, Qt::ElideRight, where.width()));
        return;
    }
    QTextLayout layout(text, painter_.font());
    layout.beginLayout();
    QTextLine first = layout.createLine();
    first.setLineWidth(where.width());
    layout.endLayout();
    const QString rest = text.mid(first.textLength());
    const double line = metrics.lineSpacing();
    const QRectF top(where.left(), where.center().y() - line, where.width(), line);
    painter_.drawText(top, Qt::AlignVCenter | Qt::AlignLeft, text.left(first.textLength()).trimmed());
    painter_.drawText(top.translated(0, line), Qt::AlignVCenter | Qt::AlignLeft,
                      metrics.elidedText(rest, Qt::ElideRight, where.width()));
}

} // namespace lorvane
