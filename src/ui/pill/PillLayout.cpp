// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillLayout.h"

#include "ui/pill/PillGeometry.h"

#include <algorithm>
#include <cmath>

namespace lorvane::pillLayout {

namespace {

constexpr double widestNotice = 416;
constexpr double narrowestNotice = 220;
/// Icon, gaps and padding beside the text.
constexpr double besideText = 34;
constexpr double oneLineHeight = 28;
constexpr double twoLineHeight = 46;
constexpr int hitWidth = 140;
constexpr int hitHeight = 34;
/// From the window's lower edge to the lowest that a capsule may stand.
constexpr double lowest = pillGeometry::overhang + 4;
/// All but the notices stand around this line, above the window's lower edge.
constexpr double middleLine = lowest + 11;

} // namespace

Content contentOf(const Phase& phase, bool hovering) {
    if (isIn<Recording>(phase)) {
        return Content::wave;
    }
    if (isIn<Processing>(phase)) {
        return Content::progress;
    }
    if (isIn<Done>(phase)) {
        return Content::done;
    }
    if (isIn<Notice>(phase)) {
        return Content::notice;
    }
    return hovering ? Content::controls : Content::restingBars;
}

QSizeF sizeOf(Content content, double noticeTextWidth) {
    switch (content) {
    case Content::restingBars:
        return {58, 15};
    case Content::controls:
        return {110, 22};
    case Content::wave:
    case Content::progress:
        return {136, 22};
    case Content::done:
        return {96, 22};
    case Content::notice:
        break;
    }
    return noticeSize(noticeTextWidth);
}

QSizeF noticeSize(double textWidth) {
    const double wanted = std::ceil(textWidth + besideText);
    return wanted <= widestNotice ? QSizeF(std::max(wanted, narrowestNotice), oneLineHeight)
                                  : QSizeF(widestNotice, twoLineHeight);
}

bool isTwoLines(const QSizeF& noticeSize) { return noticeSize.height() > oneLineHeight; }

QRect hitArea() {
    return {(pillGeometry::panelWidth - hitWidth) / 2, pillGeometry::panelHeight - hitHeight, hitWidth,
            hitHeight};
}

QRectF capsule(const QSizeF& size) {
    const double middle = std::max(middleLine, lowest + size.height() * 0.5);
    return {(pillGeometry::panelWidth - size.width()) * 0.5,
            pillGeometry::panelHeight - middle - size.height() * 0.5, size.width(), size.height()};
}

Tap tapIn(const Phase& phase) {
    if (isIn<Idle>(phase) || isIn<Done>(phase)) {
        return Tap::start;
    }
    return isIn<Recording>(phase) ? Tap::stop : Tap::nothing;
}

} // namespace lorvane::pillLayout
