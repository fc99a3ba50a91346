// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"

namespace lorvane {

/// Who is in front where windows of two systems are mixed. The X server beside a compositor names an active
/// window only while it is one of its own (measured with sway, KWin and GNOME Shell), so it is asked first.
class SessionWorkspace final : public Workspace {
 public:
    SessionWorkspace(const Workspace& ofX, const Workspace& ofAll) : ofX_(ofX), ofAll_(ofAll) {}

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override {
        auto front = ofX_.frontmostApplication();
        return front ? front : ofAll_.frontmostApplication();
    }

 private:
    const Workspace& ofX_;
    const Workspace& ofAll_;
};

} // namespace lorvane
