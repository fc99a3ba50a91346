// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "core/PasteKeys.h"
#include "platform/linux/portal/PortalKeyboard.h"

#include <deque>
#include <functional>

namespace lorvane {

/// What keys by the portal need to know besides.
struct PortalKeyFacts {
    /// The modifiers that the user holds, as bits of `modifierFlag`, as far as anyone can tell.
    std::function<std::uint32_t()> heldModifiers;
    /// The keys that paste on the layout of the moment, Linux input codes in the order in which they are
    /// pressed; none when it has none.
    std::function<std::vector<int>(PasteRoute)> pasteChord;
};

/// Posts the keys that paste by a session that is opened for this. Modifiers cannot be lifted here: with one
/// that stays held for 0.5 s nothing is posted. Main thread.
class PortalPasteKeys final : public PasteKeys {
 public:
    PortalPasteKeys(PortalKeyboard& keyboard, Clock& clock, PortalKeyFacts facts)
        : keyboard_(keyboard), clock_(clock), facts_(std::move(facts)) {}

    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    PortalKeyboard& keyboard_;
    Clock& clock_;
    PortalKeyFacts facts_;
};

/// Single keys by a session that is closed soon after the last one. Main thread.
class PortalEditingKeys final : public EditingKeys {
 public:
    PortalEditingKeys(PortalKeyboard& keyboard, Clock& clock, PortalKeyFacts facts)
        : keyboard_(keyboard), clock_(clock), facts_(std::move(facts)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return facts_.heldModifiers(); }
    [[nodiscard]] bool canPost() override { return keyboard_.isOffered(); }
    void press(EditingKey key) override;
    [[nodiscard]] bool isPending() override { return pressing_.isRunning(); }

 private:
    QCoro::Task<void> pressQueued(TaskScope scope);

    PortalKeyboard& keyboard_;
    Clock& clock_;
    PortalKeyFacts facts_;
    std::deque<int> queue_;
    Handle closing_;
    TaskHandle pressing_;
};

} // namespace lorvane
