// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Presence.h"
#include "ui/pill/PillView.h"

#include <memory>

namespace lorvane {

/// The pill on whatever surface it has. `show` and `orderOut` do nothing before it has its view. Main thread.
class PillHost : public Pill {
 public:
    /// The view reads what the dictation publishes, so it comes after that and goes before. Without a view
    /// the pill is off the screen.
    virtual void host(std::unique_ptr<PillView> view) = 0;
};

/// Where nothing can be placed above the windows. The view lives all the same: it tells every phase to
/// assistive technology.
class NoPill final : public PillHost {
 public:
    void host(std::unique_ptr<PillView> view) override { view_ = std::move(view); }
    void show() override {}
    void orderOut() override {}

 private:
    std::unique_ptr<PillView> view_;
};

} // namespace lorvane
