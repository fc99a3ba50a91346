// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Signal.h"
#include "core/DictationController.h"
#include "ui/menu/MenuContent.h"
#include "ui/menu/Updates.h"

#include <QHash>

namespace lorvane {

/// What the menu moves besides the preferences.
struct MenuTargets {
    DictationController& controller;
    MacAudioDevices& devices;
    Updates& updates;
    std::function<void()> openAccessibilitySettings;
    std::function<void()> quit;
};

/// The menu as it is now, and what its entries do. Main thread.
class MenuModel {
 public:
    MenuModel(const Foundation& foundation, const LanguageNames& languages, MenuTargets targets);
    MenuModel(const MenuModel&) = delete;
    MenuModel& operator=(const MenuModel&) = delete;

    [[nodiscard]] const std::vector<MenuEntry>& entries() const { return entries_; }
    /// Told only of a change.
    [[nodiscard]] Handle subscribe(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }
    /// Does what the entry says; `value` is what was picked. An entry that is not there does nothing.
    void activate(const QString& id, const QString& value = {});

 private:
    [[nodiscard]] MenuState state() const;
    [[nodiscard]] QHash<QString, std::function<void(const QString&)>> makeActions();
    void observe();
    void refresh();

    const Foundation foundation_;
    const LanguageNames& languages_;
    MenuTargets targets_;
    QHash<QString, std::function<void(const QString&)>> actions_;
    std::vector<MenuEntry> entries_;
    Signal<> changed_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
