// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "input/HoldRoad.h"
#include "platform/linux/kde/GlobalShortcuts.h"
#include "platform/linux/kde/KdeKeyTable.h"
#include "platform/linux/kde/ShortcutGuard.h"

#include <memory>
#include <set>

namespace lorvane {

/// Ctrl, Alt or Shift alone, the extra key and Escape as global shortcuts of a KDE session. A modifier is
/// seen by every application as ever; the extra key and Escape reach none while they are watched, so Escape
/// is to be watched only while there is something to cancel. The release of a modifier is told when another
/// key goes down; whether a key is down cannot be asked. Main thread.
class KdeHoldRoad final : public HoldRoad {
 public:
    /// `programName`: the program's name on the bus, by which a later run is known (ShortcutGuard).
    /// `areKeysOurs`: keys of this program's own making may be going past now; a press is left out then.
    KdeHoldRoad(const QDBusConnection& session, const Foundation& foundation, QString programName,
                std::function<bool()> areKeysOurs);
    KdeHoldRoad(const KdeHoldRoad&) = delete;
    KdeHoldRoad& operator=(const KdeHoldRoad&) = delete;
    ~KdeHoldRoad() override = default;

    [[nodiscard]] QString name() const override { return QStringLiteral("KDE global shortcuts"); }
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    [[nodiscard]] bool isInForce(int keyCode) const override;
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    /// KWin is the compositor and serves the shortcuts.
    [[nodiscard]] bool isThere() const { return shortcuts_.isThere(); }
    /// The modifiers among the watched keys that are down, as bits of `modifierFlag`.
    [[nodiscard]] std::uint32_t heldModifiers() const;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    struct Watch {
        std::vector<int> keyCodes;
        std::function<void(const HoldEdge&)> observer;
    };

    void endWatch(const std::shared_ptr<Watch>& watch);
    /// Takes what the watch wants and lets go of everything else.
    void follow();
    void takeKey(const KdeKey& key);
    void stayOnGuard();
    void onEdge(const QString& action, bool isDown);
    void onServiceChange();
    void tell(const HoldEdge& edge);
    [[nodiscard]] std::optional<KdeKey> keyOf(int keyCode) const;

    Clock& clock_;
    Preferences& preferences_;
    const Localisation& words_;
    DiagnosticLog& log_;
    QString programName_;
    QString uniqueName_;
    std::function<bool()> areKeysOurs_;
    /// Before the shortcuts, so that it stands down after they have been let go.
    std::unique_ptr<ShortcutGuard> guard_;
    GlobalShortcuts shortcuts_;
    std::shared_ptr<Watch> watch_;
    /// What was asked for, by the code of its key.
    QMap<int, GlobalShortcut> taken_;
    std::set<int> down_;
    Signal<> changed_;
    Handle edges_;
    Handle service_;
    Handle extraKey_;
};

} // namespace lorvane
