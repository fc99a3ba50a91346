// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/menu/MenuModel.h"

#include <QMenu>

namespace lorvane {

/// Adds the model's entries to `menu` as they are now. They work as long as the model lives.
void fillMenu(QMenu& menu, MenuModel& model);

/// The menu as a widget that stays as the model is.
class MenuView {
 public:
    explicit MenuView(MenuModel& model);
    [[nodiscard]] QMenu& menu() { return menu_; }

 private:
    MenuModel& model_;
    QMenu menu_;
    Handle subscription_;
};

} // namespace lorvane
