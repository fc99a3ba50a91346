// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/HoldRoad.h"
#include "platform/linux/x11/X11RawKeys.h"

#include <memory>
#include <set>

namespace lorvane {

/// The keys of a desktop whose compositor shows all of them to the X server beside it, also those that go to
/// other windows. The extra key is not offered: it would reach the applications as well. Main thread.
class X11HoldRoad final : public HoldRoad {
 public:
    struct World {
        /// Whether the compositor shows every key now.
        std::function<bool()> isOpen;
        /// Keys of this program's own making may be going past now; a press is left out then.
        std::function<bool()> areKeysOurs;
    };
    X11HoldRoad(X11Connection& connection, X11RawKeys& keys, Clock& clock, World world);
    X11HoldRoad(const X11HoldRoad&) = delete;
    X11HoldRoad& operator=(const X11HoldRoad&) = delete;
    ~X11HoldRoad() override = default;

    [[nodiscard]] QString name() const override { return QStringLiteral("keys shown to XWayland"); }
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    /// What the server believes down stays down when its release went elsewhere, so nothing is known.
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    /// Called when `isOpen` may have changed.
    void reconsider();

 private:
    struct Watch {
        std::function<void(const HoldEdge&)> observer;
        Handle keys;
    };

    void onEdge(const X11KeyEdge& edge);
    void loseAll();
    void tell(const HoldEdge& edge);

    X11RawKeys& keys_;
    Clock& clock_;
    World world_;
    std::shared_ptr<Watch> watch_;
    std::set<int> down_;
    Signal<> changed_;
    Handle lost_;
};

} // namespace lorvane
