// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wlroots/CompositorSocket.h"
#include "platform/linux/wlroots/KeyBinding.h"

#include <map>

namespace lorvane {

/// Our bindings in the compositor, made to be as wanted in each of the user's binding modes once that is
/// entered. Main thread.
///
/// sway (1.7, as tried) still runs a release binding that was removed while its key was down, and may crash
/// by that, so nothing is removed at a moment when a key that it is for may be down. That is the caller's to
/// judge.
class BindingTable {
 public:
    explicit BindingTable(CompositorSocket& socket) : socket_(socket) {}

    void want(KeyBindings bindings);
    [[nodiscard]] const KeyBindings& wanted() const { return wanted_; }
    void modeEntered(const QString& mode);
    /// Takes them away in the modes that are not in force now, where they would stay: commands reach the mode
    /// in force alone, so each is entered for an instant, and the present one again. For the end of the
    /// program, since everybody who follows the modes is told.
    void leaveOtherModes();
    /// The compositor has forgotten all of them.
    void forgotten();
    /// Nothing more can be said to the compositor, or nothing more shall be.
    void abandon();
    /// What the compositor said of the last bindings that it refused; empty when it took them.
    [[nodiscard]] const QString& refusal() const { return refusal_; }

 private:
    void apply();

    CompositorSocket& socket_;
    KeyBindings wanted_;
    QString mode_ = QStringLiteral("default");
    std::map<QString, KeyBindings> made_;
    QString refusal_;
};

/// The first error in an answer to commands; empty when there is none.
[[nodiscard]] QString errorIn(const QJsonDocument& answer);

} // namespace lorvane
