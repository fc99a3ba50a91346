// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QPoint>
#include <QtCore/QString>

namespace lorvane {

// The session of the virtual desktop that a test runs in, and what its user does there besides typing.
namespace session {
// "x11", "sway", "kwin" or "gnome".
QString name();
bool isWayland();

// Only in Wayland sessions. Each throws std::runtime_error when the compositor does not do it.
// The window is shown fullscreen or as before; it happens later.
void makeFullscreen(quint32 window, bool wanted = true);
// The left button, in pixels of the screen.
void click(const QPoint& place);
// Takes a picture of the whole screen and returns its file, which the virtual desktop's --pictures keeps.
QString takePicture(const QString& name);
// GNOME Shell keeps a clipboard of its own beside that of X, and copies late from the one to the other:
// whether it has this type there. In other sessions nothing stands between.
bool compositorHasCopied(const QString& type);
// The compositor's own process. Its end is the end of the session.
qint64 compositor();

// What the program's user has done once in this kind of session, as docs/desktops.md tells: the extension of
// the GNOME Shell is on, and KWin knows the program's desktop entry. Does it at the first call in a process.
void beSetUp();
// Lets KWin show programs of X11 the modifiers, by the program's own setup, or takes that back.
void showModifiersToX(bool wanted);
} // namespace session

} // namespace lorvane
