// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/pill/PillColours.h"
#include "ui/pill/PillMotion.h"

#include <QFont>
#include <QPainterPath>
#include <QString>

class QPaintDevice;
class QPainter;

namespace lorvane {

/// A font of so many points of the pill's own coordinates, whatever the screen's resolution.
[[nodiscard]] QFont pillFont(double size, QFont::Weight weight, const QPaintDevice& device);
/// Of the labels and notices.
[[nodiscard]] QFont pillTextFont(const QPaintDevice& device);

/// The outline of a capsule: round ends, softened corners when it is taller than a line.
[[nodiscard]] QPainterPath capsulePath(const QRectF& capsule);

/// The outline of a tip.
[[nodiscard]] QPainterPath tipPath(const QRectF& area);

/// What is drawn, all of it.
struct PillPicture {
    pillLayout::Content content = pillLayout::Content::restingBars;
    QRectF capsule;
    /// Of the label or the notice.
    QString text;
    NoticeSeverity severity = NoticeSeverity::warning;
    double appearance = 1;
    double pop = 1;
    double turn = 0;
    WaveModel::Bars bars{};
    /// Above the capsule; empty without one.
    QRectF tipArea;
    QString tip;
    /// Without it the window is cut out along the capsule and what is outside of it is not seen.
    bool isComposited = true;
};

/// Draws the capsule and what it shows; the controls are widgets of their own.
class PillPainter {
 public:
    PillPainter(QPainter& painter, const PillColours& colours) : painter_(painter), colours_(colours) {}

    void draw(const PillPicture& picture);
    /// Where the button of a take on its way stands.
    [[nodiscard]] static QRectF cancelArea(const QRectF& capsule);
    /// Where a tip stands: above the capsule, in the middle of what it is about, inside the window.
    [[nodiscard]] static QRectF tipArea(const QString& tip, double middle, const QRectF& capsule,
                                        const QPaintDevice& device);

 private:
    void drawShadow(const QRectF& capsule);
    void drawCapsule(const PillPicture& picture);
    void drawRestingBars(const QRectF& capsule);
    void drawWave(const PillPicture& picture);
    void drawProgress(const PillPicture& picture);
    void drawDone(const PillPicture& picture);
    void drawTip(const PillPicture& picture);
    void drawNotice(const PillPicture& picture);
    void drawBar(double x, double middle, double height, const QColor& colour);
    void drawSpinner(const QRectF& where, double turn);
    void drawText(const QRectF& where, const QString& text, const QColor& colour, bool twoLines);

    QPainter& painter_;
    const PillColours& colours_;
};

} // namespace lorvane
