// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/DBusMenuTree.h"

namespace lorvane {

namespace {

// An underscore would be taken for the mark of a shortcut.
QVariantMap labelled(QString title) {
    return {{QStringLiteral("label"), title.replace(u'_', QStringLiteral("__"))}};
}

void addCheck(QVariantMap& properties, const char* kind, bool isOn) {
    properties.insert(QStringLiteral("toggle-type"), QString::fromLatin1(kind));
    properties.insert(QStringLiteral("toggle-state"), isOn ? 1 : 0);
}

DBusMenuLayout cut(DBusMenuLayout item, int depth) {
    if (depth == 0) {
        item.children.clear();
    } else if (depth > 0) {
        for (DBusMenuLayout& child : item.children) {
            child = cut(std::move(child), depth - 1);
        }
    }
    return item;
}

} // namespace

void DBusMenuTree::setEntries(const std::vector<MenuEntry>& entries) {
    targets_.clear();
    ids_ = {0};
    root_ = {0, {{QStringLiteral("children-display"), QStringLiteral("submenu")}}, {}};
    int nameless = 0;
    for (const MenuEntry& entry : entries) {
        const QString key = entry.id.isEmpty() ? QStringLiteral("/%1").arg(++nameless) : entry.id;
        root_.children.append(itemOf(entry, key));
    }
}

DBusMenuLayout DBusMenuTree::itemOf(const MenuEntry& entry, const QString& key) {
    using Kind = MenuEntry::Kind;
    DBusMenuLayout item{idOf(key), {}, {}};
    if (entry.kind == Kind::divider) {
        item.properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return item;
    }
    item.properties = labelled(entry.title);
    if (entry.kind == Kind::text) {
        item.properties.insert(QStringLiteral("enabled"), false);
    } else if (entry.kind == Kind::picker) {
        item.properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
        for (const MenuChoice& choice : entry.choices) {
            item.children.append(choiceOf(entry, choice));
        }
    } else {
        targets_.insert(item.id, {entry.id, {}});
    }
    if (entry.kind == Kind::toggle) {
        addCheck(item.properties, "checkmark", entry.isOn);
    }
    return item;
}

DBusMenuLayout DBusMenuTree::choiceOf(const MenuEntry& entry, const MenuChoice& choice) {
    DBusMenuLayout item{idOf(entry.id + u'/' + choice.value), labelled(choice.title), {}};
    addCheck(item.properties, "radio", choice.isChosen);
    targets_.insert(item.id, {entry.id, choice.value});
    return item;
}

int DBusMenuTree::idOf(const QString& key) {
    const auto known = known_.constFind(key);
    const int id = known == known_.constEnd() ? static_cast<int>(known_.size()) + 1 : *known;
    known_.insert(key, id);
    ids_.append(id);
    return id;
}

const DBusMenuLayout* DBusMenuTree::find(const DBusMenuLayout& in, int id) const {
    if (in.id == id) {
        return &in;
    }
    for (const DBusMenuLayout& child : in.children) {
        if (const auto* const found = find(child, id)) {
            return found;
        }
    }
    return nullptr;
}

std::optional<DBusMenuLayout> DBusMenuTree::layout(int id, int depth) const {
    const auto* const item = find(root_, id);
    return item == nullptr ? std::nullopt : std::optional(cut(*item, depth));
}

std::optional<QVariantMap> DBusMenuTree::properties(int id) const {
    const auto* const item = find(root_, id);
    return item == nullptr ? std::nullopt : std::optional(item->properties);
}

std::optional<DBusMenuTree::Target> DBusMenuTree::target(int id) const {
    const auto found = targets_.constFind(id);
    return found == targets_.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace lorvane
