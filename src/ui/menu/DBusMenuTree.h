// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/menu/DBusMenuTypes.h"
#include "ui/menu/MenuContent.h"

#include <QHash>

namespace lorvane {

/// The menu as com.canonical.dbusmenu numbers and describes it (libdbusmenu's dbus-menu.xml). Numbers stay
/// with what they name, so that a menu that is open while another entry appears still means what it shows.
class DBusMenuTree {
 public:
    void setEntries(const std::vector<MenuEntry>& entries);

    /// Down to `depth` levels below it, or all of them when it is negative; nothing for an unknown number.
    [[nodiscard]] std::optional<DBusMenuLayout> layout(int id, int depth) const;
    [[nodiscard]] std::optional<QVariantMap> properties(int id) const;
    [[nodiscard]] const QList<int>& ids() const { return ids_; }

    struct Target {
        QString id;
        QString value;
        friend bool operator==(const Target&, const Target&) = default;
    };
    /// What a click on it activates.
    [[nodiscard]] std::optional<Target> target(int id) const;

 private:
    [[nodiscard]] DBusMenuLayout itemOf(const MenuEntry& entry, const QString& key);
    [[nodiscard]] DBusMenuLayout choiceOf(const MenuEntry& entry, const MenuChoice& choice);
    [[nodiscard]] int idOf(const QString& key);
    [[nodiscard]] const DBusMenuLayout* find(const DBusMenuLayout& in, int id) const;

    DBusMenuLayout root_;
    QHash<QString, int> known_;
    QHash<int, Target> targets_;
    QList<int> ids_;
};

} // namespace lorvane
