// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/pill/PillContent.h"

#include <QMenu>

#include <functional>
#include <memory>

namespace lorvane {

/// The pill's menus. Each is made when it is opened.
namespace pillMenus {

/// One row for each choice; `choose` is given the code.
[[nodiscard]] std::unique_ptr<QMenu> choices(const QString& title,
                                             const std::vector<pillContent::MenuRow>& rows,
                                             std::function<void(const QString& code)> choose);
/// The same under its title.
[[nodiscard]] std::unique_ptr<QMenu> titledChoices(const QString& title,
                                                   const std::vector<pillContent::MenuRow>& rows,
                                                   std::function<void(const QString& code)> choose);

struct ContextActions {
    std::function<void()> hideForAnHour;
    std::function<void()> quit;
    /// Adds the program's whole menu, which quits too, where the desktop has no tray for it; false where it
    /// has. May be empty.
    std::function<bool(QMenu&)> extend;
};
[[nodiscard]] std::unique_ptr<QMenu> context(const ContextActions& actions, const Localisation& words);

} // namespace pillMenus

} // namespace lorvane
