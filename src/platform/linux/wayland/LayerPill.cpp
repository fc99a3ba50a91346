// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wayland/LayerPill.h"

#include "ui/pill/PillGeometry.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>

#include <linux/input-event-codes.h>

// The C header has a parameter of that name.
#define namespace nameSpace
#include <wlr-layer-shell-unstable-v1-client-protocol.h>
#undef namespace

namespace lorvane {

namespace {

constexpr std::uint32_t surfaceVersion = 4; // damage in pixels of the buffer
constexpr std::uint32_t outputVersion = 2;  // tells the scale
/// At most as often as a screen shows it.
constexpr Duration frameTime = std::chrono::milliseconds(16);

} // namespace

const zwlr_layer_surface_v1_listener LayerPill::surfaceListener{
    [](void* self, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t, std::uint32_t) {
        static_cast<LayerPill*>(self)->configured(serial);
    },
    [](void* self, zwlr_layer_surface_v1*) {
        // The screen that it was on has gone: it comes back on another.
        auto& pill = *static_cast<LayerPill*>(self);
        pill.making_ = pill.clock_.after(Duration::zero(), [&pill] {
            pill.dropSurface();
            pill.makeSurface();
        });
    }};

const wl_pointer_listener LayerPill::pointerListener{
    [](void* self, wl_pointer*, std::uint32_t, wl_surface* surface, wl_fixed_t x, wl_fixed_t y) {
        auto& pill = *static_cast<LayerPill*>(self);
        pill.isPointerInside_ = surface == pill.surface_.get();
        pill.pointerAt_ = QPoint(wl_fixed_to_int(x), wl_fixed_to_int(y));
    },
    [](void* self, wl_pointer*, std::uint32_t, wl_surface*) {
        static_cast<LayerPill*>(self)->isPointerInside_ = false;
    },
    [](void* self, wl_pointer*, std::uint32_t, wl_fixed_t x, wl_fixed_t y) {
        static_cast<LayerPill*>(self)->pointerAt_ = QPoint(wl_fixed_to_int(x), wl_fixed_to_int(y));
    },
    [](void* self, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t button, std::uint32_t state) {
        if (button == BTN_LEFT) {
            static_cast<LayerPill*>(self)->press(state == WL_POINTER_BUTTON_STATE_PRESSED);
        }
    },
    [](void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) {},
    [](void*, wl_pointer*) {},
    [](void*, wl_pointer*, std::uint32_t) {},
    [](void*, wl_pointer*, std::uint32_t, std::uint32_t) {},
    [](void*, wl_pointer*, std::uint32_t, std::int32_t) {},
    [](void*, wl_pointer*, std::uint32_t, std::int32_t) {}};

const wl_output_listener LayerPill::outputListener{
    [](void*, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t, const char*,
       const char*, std::int32_t) {},
    [](void*, wl_output*, std::uint32_t, std::int32_t, std::int32_t, std::int32_t) {},
    [](void*, wl_output*) {},
    [](void* self, wl_output*, std::int32_t factor) {
        auto& pill = *static_cast<LayerPill*>(self);
        pill.scale_ = std::max(1, factor);
        pill.buffers_.reset();
        pill.redrawSoon();
    },
    [](void*, wl_output*, const char*) {},
    [](void*, wl_output*, const char*) {}};

std::unique_ptr<LayerPill> LayerPill::open(WaylandConnection& connection, WaylandSeat& seat, Clock& clock) {
    auto pill = std::unique_ptr<LayerPill>(new LayerPill(connection, seat, clock));
    return pill->bind() ? std::move(pill) : nullptr;
}

LayerPill::LayerPill(WaylandConnection& connection, WaylandSeat& seat, Clock& clock)
    : connection_(connection), seat_(seat), clock_(clock) {}

LayerPill::~LayerPill() { dropSurface(); }

bool LayerPill::bind() {
    compositor_ =
        waylandOwned(connection_.bind<wl_compositor>(wl_compositor_interface, surfaceVersion, surfaceVersion),
                     wl_compositor_destroy);
    shm_ = waylandOwned(connection_.bind<wl_shm>(wl_shm_interface, 1), wl_shm_destroy);
    shell_ = waylandOwned(connection_.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 1),
                          zwlr_layer_shell_v1_destroy);
    if (!compositor_ || !shm_ || !shell_) {
        return false;
    }
    output_ =
        waylandOwned(connection_.bind<wl_output>(wl_output_interface, outputVersion), wl_output_destroy);
    if (output_) {
        wl_output_add_listener(output_.get(), &outputListener, this);
    }
    capabilitiesChanged_ = seat_.onCapabilitiesChanged([this] { followPointer(); });
    followPointer();
    return true;
}

void LayerPill::followPointer() {
    pointer_.reset();
    if (seat_.seat() != nullptr && seat_.hasPointer()) {
        pointer_ = waylandOwned(wl_seat_get_pointer(seat_.seat()), wl_pointer_destroy);
        wl_pointer_add_listener(pointer_.get(), &pointerListener, this);
    }
}

void LayerPill::host(std::unique_ptr<PillView> view) {
    orderOut();
    view_ = std::move(view);
    if (view_) {
        view_->setComposited(true);
        view_->onRedraw = [this] { redrawSoon(); };
    }
}

void LayerPill::show() {
    if (!view_) {
        return;
    }
    view_->setShown(true);
    if (!surface_) {
        makeSurface();
    }
    redrawSoon();
}

void LayerPill::orderOut() {
    if (view_) {
        view_->setShown(false);
    }
    dropSurface();
    connection_.flush();
}

void LayerPill::makeSurface() {
    if (!connection_.isAlive()) {
        return;
    }
    surface_ = waylandOwned(wl_compositor_create_surface(compositor_.get()), wl_surface_destroy);
    layer_ = waylandOwned(zwlr_layer_shell_v1_get_layer_surface(shell_.get(), surface_.get(), nullptr,
                                                                ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "lorvane"),
                          zwlr_layer_surface_v1_destroy);
    zwlr_layer_surface_v1_add_listener(layer_.get(), &surfaceListener, this);
    zwlr_layer_surface_v1_set_size(layer_.get(), pillGeometry::panelWidth, pillGeometry::panelHeight);
    zwlr_layer_surface_v1_set_anchor(layer_.get(), ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM);
    zwlr_layer_surface_v1_set_margin(layer_.get(), 0, 0, -pillGeometry::overhang, 0);
    zwlr_layer_surface_v1_set_keyboard_interactivity(layer_.get(), 0);
    const QRect area = pillLayout::hitArea();
    const auto region = waylandOwned(wl_compositor_create_region(compositor_.get()), wl_region_destroy);
    wl_region_add(region.get(), area.x(), area.y(), area.width(), area.height());
    wl_surface_set_input_region(surface_.get(), region.get());
    // The compositor answers a first commit without a picture by saying where it stands.
    wl_surface_commit(surface_.get());
    connection_.flush();
}

void LayerPill::dropSurface() {
    making_.reset();
    drawing_.reset();
    isConfigured_ = false;
    isPointerInside_ = false;
    layer_.reset();
    surface_.reset();
    buffers_.reset();
}

void LayerPill::configured(std::uint32_t serial) {
    zwlr_layer_surface_v1_ack_configure(layer_.get(), serial);
    isConfigured_ = true;
    redraw();
}

void LayerPill::redrawSoon() {
    isDirty_ = true;
    if (!drawing_) {
        drawing_ = clock_.after(frameTime, [this] {
            drawing_.reset();
            redraw();
        });
    }
}

void LayerPill::redraw() {
    if (!isConfigured_ || !view_) {
        return;
    }
    if (!buffers_) {
        const QSize points(pillGeometry::panelWidth, pillGeometry::panelHeight);
        buffers_ = std::make_unique<ShmBuffers>(shm_.get(), points * scale_);
        buffers_->onFree = [this] {
            if (isDirty_) {
                redrawSoon();
            }
        };
    }
    if (!buffers_->hasFree()) {
        return;
    }
    isDirty_ = false;
    buffers_->present(surface_.get(), scale_, [this](QImage& picture) {
        QPainter painter(&picture);
        view_->render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    });
    connection_.flush();
}

// To the control that is there, as a window would hand it on.
void LayerPill::press(bool isDown) {
    if (!view_ || (isDown && !isPointerInside_)) {
        return;
    }
    if (isDown) {
        QWidget* const child = view_->childAt(pointerAt_);
        pressed_ = child != nullptr ? child : view_.get();
    }
    if (pressed_.isNull()) {
        return;
    }
    const QPoint at = pressed_->mapFrom(view_.get(), pointerAt_);
    QMouseEvent event(isDown ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, at, pointerAt_,
                      Qt::LeftButton, isDown ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QWidget* const target = pressed_;
    if (!isDown) {
        pressed_.clear();
    }
    QCoreApplication::sendEvent(target, &event);
}

} // namespace lorvane
