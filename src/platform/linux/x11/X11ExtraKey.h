// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11KeyTable.h"

#include <optional>
#include <vector>

namespace lorvane {

/// Keeps the key that stands for `fn` from other applications while it is chosen, so that no context menu
/// opens under the user. While that key is down the other keys are kept from them too. Follows the
/// preferences. Main thread.
class X11ExtraKey {
 public:
    enum class State {
        notChosen,  ///< neither hotkey is `fn`: the key is everybody's
        kept,       ///< ours alone
        refused,    ///< another program has it: it works, and does what it does there besides
        unknownKey, ///< the preference names no key: `fn` never goes down
    };

    X11ExtraKey(X11Connection& connection, const Foundation& foundation);
    X11ExtraKey(const X11ExtraKey&) = delete;
    X11ExtraKey& operator=(const X11ExtraKey&) = delete;
    ~X11ExtraKey();

    [[nodiscard]] State state() const { return state_; }

 private:
    void follow();
    [[nodiscard]] bool isChosen() const;
    [[nodiscard]] State keep(XKeyCode key);
    void letGo();

    X11Connection& connection_;
    Preferences& preferences_;
    DiagnosticLog& log_;
    State state_ = State::notChosen;
    std::optional<XKeyCode> kept_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
