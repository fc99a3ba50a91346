// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillPanel.h"

#include "ui/pill/PillGeometry.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPainterPath>
#include <QRegion>
#include <QScreen>
#include <QTransform>

namespace lorvane {

namespace {

constexpr Spring::Feel glideFeel{0.3, 1, 0.5};
constexpr Duration frameTime = seconds(1.0 / 60);

const auto tipLook =
    QStringLiteral("QToolTip { background: #1f1a13; color: #f4efe6; border: 1px solid #4a4439;"
                   " padding: 3px 6px; }");

// Qt keeps the place of each screen in pixels and counts in points from there.
const QScreen* screenAt(const QPoint& pixels) {
    for (const QScreen* const screen : QGuiApplication::screens()) {
        const QRect points = screen->geometry();
        const QSize size = (QSizeF(points.size()) * screen->devicePixelRatio()).toSize();
        if (QRect(points.topLeft(), size).contains(pixels)) {
            return screen;
        }
    }
    return QGuiApplication::primaryScreen();
}

QPoint toPoints(const QPoint& pixels, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    const QPointF away = QPointF(pixels - origin) / screen.devicePixelRatio();
    return origin + QPoint(pillGeometry::rounded(away.x()), pillGeometry::rounded(away.y()));
}

} // namespace

PillPanel::PillPanel(Clock& clock, PillDesktop& desktop, PillSurface& surface)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint |
                           Qt::NoDropShadowWindowHint),
      clock_(clock), surface_(surface), x_(glideFeel, 0), y_(glideFeel, 0),
      stacking_(desktop.onChange([this](DesktopChange) { stayInFront(); })),
      compositing_(surface.onCompositedChange([this] { shapeWindow(); })),
      placement_(clock, desktop,
                 {[](const QRect& frame) { return screenAt(frame.center())->devicePixelRatio(); },
                  [this](const QRect& place, bool animated) { moveTo(place, animated); }}) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_X11DoNotAcceptFocus);
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Lorvane"));
    setFixedSize(pillGeometry::panelWidth, pillGeometry::panelHeight);
}

PillPanel::~PillPanel() = default;

void PillPanel::host(std::unique_ptr<PillView> view) {
    orderOut();
    view_ = std::move(view);
    if (!view_) {
        return;
    }
    view_->setParent(this);
    view_->move(0, 0);
    view_->onShape = [this] { shapeWindow(); };
    shapeWindow();
}

void PillPanel::show() {
    if (!view_) {
        return;
    }
    placement_.reposition(false);
    view_->setShown(true);
    shapeWindow();
    QWidget::show();
    raise();
}

void PillPanel::orderOut() {
    if (view_) {
        view_->setShown(false);
    }
    hide();
}

// The window is another one, or has another size in pixels: the display knows nothing of its shape.
bool PillPanel::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::WinIdChange || event->type() == QEvent::Show ||
        event->type() == QEvent::ScreenChangeInternal) {
        shapeInput();
    }
    return handled;
}

void PillPanel::moveTo(const QRect& place, bool animated) {
    const bool glides = animated && isVisible() && view_ && !view_->wantsLessMotion();
    x_.setTarget(place.x());
    y_.setTarget(place.y());
    size_ = place.size();
    if (!glides) {
        x_.jump(place.x());
        y_.jump(place.y());
        gliding_.reset();
        put(place);
        return;
    }
    if (!gliding_) {
        lastStep_ = clock_.now();
        gliding_ = clock_.every(frameTime, [this] { glide(); });
    }
}

void PillPanel::glide() {
    const Instant now = clock_.now();
    x_.advance(now - lastStep_);
    y_.advance(now - lastStep_);
    lastStep_ = now;
    put({QPoint(pillGeometry::rounded(x_.value()), pillGeometry::rounded(y_.value())), size_});
    if (x_.isAtRest() && y_.isAtRest()) {
        gliding_.reset();
    }
}

void PillPanel::put(const QRect& place) {
    const QScreen* const screen = screenAt(place.center());
    move(toPoints(place.topLeft(), *screen));
}

void PillPanel::shapeInput() {
    if (internalWinId() == 0) {
        return;
    }
    const double scale = devicePixelRatio();
    const QRectF area(pillLayout::hitArea());
    surface_.acceptInputOnlyIn(static_cast<std::uint32_t>(internalWinId()),
                               QRectF(area.topLeft() * scale, area.size() * scale).toRect());
}

// A window that has just been shown stands above all that were there, whatever they asked for.
void PillPanel::stayInFront() {
    if (isVisible()) {
        raise();
    }
}

// Where nothing is see-through, the window is cut out along the capsule.
void PillPanel::shapeWindow() {
    if (!view_) {
        return;
    }
    view_->setComposited(surface_.isComposited());
    if (surface_.isComposited()) {
        clearMask();
        return;
    }
    QRegion shape;
    for (const QPolygonF& outline : view_->outline().toFillPolygons()) {
        shape += QRegion(outline.toPolygon());
    }
    setMask(shape);
}

} // namespace lorvane
