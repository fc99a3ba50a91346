// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

#include <functional>

namespace lorvane {

/// Menus that leave the keyboard where it is. An ordinary menu grabs it, so the field that the user writes in
/// would lose its caret; these hold the pointer alone: a click elsewhere closes them, and keys go on to the
/// application. Submenus are treated the same.
namespace quietMenu {

/// Before the menu is shown. `isSeeThrough`: the screen shows what lies below round corners.
void prepare(QMenu& menu, bool isSeeThrough);
/// Above the point, in the middle of it, within the screen. The menu deletes itself when it has closed, and
/// `closed` is called before.
void open(QMenu* menu, const QPoint& above, std::function<void()> closed);

} // namespace quietMenu

} // namespace lorvane
