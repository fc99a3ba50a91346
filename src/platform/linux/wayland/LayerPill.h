// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wayland/ShmBuffers.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "ui/pill/PillHost.h"

#include <QPointer>

#include <memory>

struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;
struct zwlr_layer_surface_v1_listener;

namespace lorvane {

/// The pill on a surface of the compositor's overlay layer (wlr_layer_shell_unstable_v1), for sessions
/// without an X server: at the bottom of the screen that the compositor chooses, above everything, never with
/// the keyboard. The pointer presses what it shows; controls that come up under the pointer, and menus, it
/// has not. Main thread.
class LayerPill final : public PillHost {
 public:
    /// Null when the compositor lacks something for it. The connection knows its globals already.
    [[nodiscard]] static std::unique_ptr<LayerPill> open(WaylandConnection& connection, WaylandSeat& seat,
                                                         Clock& clock);
    ~LayerPill() override;

    void host(std::unique_ptr<PillView> view) override;
    void show() override;
    void orderOut() override;

 private:
    LayerPill(WaylandConnection& connection, WaylandSeat& seat, Clock& clock);
    [[nodiscard]] bool bind();
    void followPointer();
    void makeSurface();
    void dropSurface();
    void configured(std::uint32_t serial);
    void redrawSoon();
    void redraw();
    void press(bool isDown);

    static const zwlr_layer_surface_v1_listener surfaceListener;
    static const wl_pointer_listener pointerListener;
    static const wl_output_listener outputListener;

    WaylandConnection& connection_;
    WaylandSeat& seat_;
    Clock& clock_;
    WaylandOwned<wl_compositor> compositor_;
    WaylandOwned<wl_shm> shm_;
    WaylandOwned<zwlr_layer_shell_v1> shell_;
    WaylandOwned<wl_output> output_;
    WaylandOwned<wl_pointer> pointer_;
    Handle capabilitiesChanged_;
    int scale_ = 1;
    std::unique_ptr<PillView> view_;
    WaylandOwned<wl_surface> surface_;
    WaylandOwned<zwlr_layer_surface_v1> layer_;
    std::unique_ptr<ShmBuffers> buffers_;
    bool isConfigured_ = false;
    bool isDirty_ = false;
    QPoint pointerAt_;
    bool isPointerInside_ = false;
    QPointer<QWidget> pressed_;
    Handle drawing_;
    Handle making_;
};

} // namespace lorvane
