// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/DBusMenu.h"

#include <QGuiApplication>

namespace lorvane {

namespace {

QVariantMap only(QVariantMap properties, const QStringList& names) {
    if (!names.isEmpty()) {
        properties.removeIf([&](const auto& property) { return !names.contains(property.key()); });
    }
    return properties;
}

DBusMenuLayout only(DBusMenuLayout item, const QStringList& names) {
    item.properties = only(std::move(item.properties), names);
    for (DBusMenuLayout& child : item.children) {
        child = only(std::move(child), names);
    }
    return item;
}

} // namespace

DBusMenu::DBusMenu(QObject* parent, MenuModel& model) : QDBusAbstractAdaptor(parent), model_(model) {
    registerTrayTypes();
    tree_.setEntries(model_.entries());
    subscription_ = model_.subscribe([this] { refresh(); });
}

QString DBusMenu::textDirection() {
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

void DBusMenu::refresh() {
    tree_.setEntries(model_.entries());
    Q_EMIT LayoutUpdated(++revision_, 0);
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                         DBusMenuLayout& layout) {
    layout = only(tree_.layout(parentId, recursionDepth).value_or(DBusMenuLayout{parentId, {}, {}}),
                  propertyNames);
    return revision_;
}

DBusMenuItems DBusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
    DBusMenuItems items;
    for (const int id : ids.isEmpty() ? tree_.ids() : ids) {
        if (auto properties = tree_.properties(id)) {
            items.append({id, only(std::move(*properties), propertyNames)});
        }
    }
    return items;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name) {
    return QDBusVariant(tree_.properties(id).value_or(QVariantMap()).value(name, QString()));
}

void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/) {
    const auto target = tree_.target(id);
    if (!target || eventId != QLatin1String("clicked")) {
        return;
    }
    // The answer goes out first: the entry may end the program.
    QMetaObject::invokeMethod(
        this, [this, target] { model_.activate(target->id, target->value); }, Qt::QueuedConnection);
}

QList<int> DBusMenu::EventGroup(const DBusMenuEvents& events) {
    QList<int> unknown;
    for (const DBusMenuEvent& event : events) {
        if (!tree_.properties(event.id)) {
            unknown.append(event.id);
        }
        Event(event.id, event.name, event.data, event.timestamp);
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int /*id*/) { return false; }

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    for (const int id : ids) {
        if (!tree_.properties(id)) {
            idErrors.append(id);
        }
    }
    return {};
}

} // namespace lorvane
