// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/clipboard/ClipboardOffer.h"

#include <optional>

namespace lorvane {

/// One selection (the clipboard, or that of the middle mouse button) that this program owns while it may,
/// whatever system it belongs to. Main thread.
class OwnedSelection {
 public:
    virtual ~OwnedSelection() = default;

    /// Takes the selection from whoever has it.
    virtual void take(ClipboardOffer offer) = 0;
    /// Offers something else and tells everyone who watches the selection. Nothing happens when another
    /// program has taken it, even when that news is still on its way.
    virtual void replace(ClipboardOffer offer) = 0;
    /// Leaves the selection without an owner, with the same reserve.
    virtual void release() = 0;
    /// A text that is held back is everyone's from now on.
    void keysGoOut() { offer_.letOut(); }

    [[nodiscard]] bool isOwned() const { return isOwned_; }
    /// Another program has taken the selection since it was ours.
    [[nodiscard]] bool isLost() const { return isLost_; }
    [[nodiscard]] const ClipboardOffer& offer() const { return offer_; }
    /// When the one that the text was lent to last asked for it.
    [[nodiscard]] std::optional<Instant> lastRequest() const { return lastRequest_; }

 protected:
    ClipboardOffer offer_;
    bool isOwned_ = false;
    bool isLost_ = false;
    std::optional<Instant> lastRequest_;
};

} // namespace lorvane
