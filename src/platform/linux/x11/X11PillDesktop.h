// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/x11/X11Connection.h"
#include "ui/pill/PillDesktop.h"

namespace lorvane {

/// The desktop that the pill finds its place on. Main thread.
class X11PillDesktop final : public PillDesktop {
 public:
    explicit X11PillDesktop(X11Connection& connection);

    [[nodiscard]] QPoint pointer() override;
    [[nodiscard]] std::vector<DesktopScreen> screens() override;
    [[nodiscard]] std::optional<std::vector<DesktopWindow>> windows() override;
    [[nodiscard]] bool isOwn(const DesktopWindow& window) override;
    [[nodiscard]] Handle onChange(std::function<void(DesktopChange)> observer) override;

 private:
    void handleEvent(const xcb_generic_event_t& event);
    void tell(xcb_atom_t property);

    X11Connection& connection_;
    std::uint8_t screenEvent_ = 0;
    Signal<DesktopChange> changed_;
    Handle events_;
};

/// Whether there is a compositor (the owner of the selection _NET_WM_CM_S0 of the Extended Window Manager
/// Hints), and input shapes (the X extensions XFixes and SHAPE). Main thread.
class X11PillSurface final : public PillSurface {
 public:
    explicit X11PillSurface(X11Connection& connection);

    [[nodiscard]] bool isComposited() const override { return isComposited_; }
    [[nodiscard]] Handle onCompositedChange(std::function<void()> observer) override {
        return changed_.subscribe([observer = std::move(observer)] { observer(); });
    }
    void acceptInputOnlyIn(std::uint32_t window, const QRect& area) override;

 private:
    [[nodiscard]] bool readComposited();
    void handleEvent(const xcb_generic_event_t& event);

    X11Connection& connection_;
    xcb_atom_t selection_;
    std::uint8_t selectionEvent_ = 0;
    bool isComposited_ = false;
    Signal<> changed_;
    Handle events_;
};

} // namespace lorvane
