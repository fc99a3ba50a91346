// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillMenus.h"

#include <QAction>

namespace lorvane::pillMenus {

std::unique_ptr<QMenu> choices(const QString& title, const std::vector<pillContent::MenuRow>& rows,
                               std::function<void(const QString& code)> choose) {
    auto menu = std::make_unique<QMenu>();
    menu->setAccessibleName(title);
    for (const pillContent::MenuRow& row : rows) {
        QAction* const action = menu->addAction(row.label);
        action->setCheckable(true);
        action->setChecked(row.isChosen);
        QObject::connect(action, &QAction::triggered, menu.get(),
                         [choose, code = row.code] { choose(code); });
    }
    return menu;
}

std::unique_ptr<QMenu> titledChoices(const QString& title, const std::vector<pillContent::MenuRow>& rows,
                                     std::function<void(const QString& code)> choose) {
    auto menu = choices(title, rows, std::move(choose));
    auto* const heading = new QAction(title, menu.get());
    heading->setEnabled(false);
    menu->insertAction(menu->actions().value(0), heading);
    return menu;
}

std::unique_ptr<QMenu> context(const ContextActions& actions, const Localisation& words) {
    auto menu = std::make_unique<QMenu>();
    QObject::connect(menu->addAction(words.text("Hide for 1 hour")), &QAction::triggered, menu.get(),
                     actions.hideForAnHour);
    menu->addSeparator();
    if (actions.extend && actions.extend(*menu)) {
        return menu;
    }
    QObject::connect(menu->addAction(words.text("Quit Lorvane")), &QAction::triggered, menu.get(),
                     actions.quit);
    return menu;
}

} // namespace lorvane::pillMenus
