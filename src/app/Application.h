// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>

#include <memory>

namespace lorvane {

/// The application object of the program that stays and shows things: one with windows when a display
/// answers (by X, also beside a Wayland compositor, unless the user set another platform), else one without,
/// so that the caller can still say on the bus and on the terminal what is wrong. Sets the environment that
/// Qt reads, so it comes before everything else of Qt.
[[nodiscard]] std::unique_ptr<QCoreApplication> makeProgramApplication(int& argc, char** argv);

/// While it lives, a process that ends by exit(), as Qt's own ends when the X display goes away, calls `say`
/// first. One at a time. `say` may touch everything that main holds, since nothing has been unwound.
class UnexpectedExit {
 public:
    explicit UnexpectedExit(void (*say)());
    ~UnexpectedExit();
    UnexpectedExit(const UnexpectedExit&) = delete;
    UnexpectedExit& operator=(const UnexpectedExit&) = delete;
};

} // namespace lorvane
