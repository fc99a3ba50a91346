// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/MenuView.h"

#include <QActionGroup>

namespace lorvane {

namespace {

// An ampersand would be taken for the mark of a shortcut.
QString asLabel(QString title) { return title.replace(u'&', QStringLiteral("&&")); }

void addPicker(QMenu& menu, const MenuEntry& entry, MenuModel& model) {
    auto* const choices = new QMenu(asLabel(entry.title), &menu);
    auto* const group = new QActionGroup(choices);
    for (const MenuChoice& choice : entry.choices) {
        QAction* const row = choices->addAction(asLabel(choice.title));
        row->setCheckable(true);
        row->setChecked(choice.isChosen);
        group->addAction(row);
        QObject::connect(row, &QAction::triggered, choices,
                         [&model, id = entry.id, value = choice.value] { model.activate(id, value); });
    }
    menu.addMenu(choices);
}

void addEntry(QMenu& menu, const MenuEntry& entry, MenuModel& model) {
    using Kind = MenuEntry::Kind;
    if (entry.kind == Kind::divider) {
        menu.addSeparator();
        return;
    }
    if (entry.kind == Kind::picker) {
        addPicker(menu, entry, model);
        return;
    }
    QAction* const row = menu.addAction(asLabel(entry.title));
    row->setEnabled(entry.kind != Kind::text);
    row->setCheckable(entry.kind == Kind::toggle);
    row->setChecked(entry.isOn);
    QObject::connect(row, &QAction::triggered, &menu, [&model, id = entry.id] { model.activate(id); });
}

void emptyMenu(QMenu& menu) {
    const auto pickers = menu.findChildren<QMenu*>(Qt::FindDirectChildrenOnly);
    menu.clear();
    for (QMenu* const picker : pickers) {
        picker->deleteLater(); // it may be what is clicked in
    }
}

} // namespace

void fillMenu(QMenu& menu, MenuModel& model) {
    for (const MenuEntry& entry : model.entries()) {
        addEntry(menu, entry, model);
    }
}

MenuView::MenuView(MenuModel& model) : model_(model) {
    fillMenu(menu_, model_);
    subscription_ = model_.subscribe([this] {
        // Later, since a click on one of the entries may be what changed them.
        QMetaObject::invokeMethod(
            &menu_,
            [this] {
                emptyMenu(menu_);
                fillMenu(menu_, model_);
            },
            Qt::QueuedConnection);
    });
}

} // namespace lorvane
