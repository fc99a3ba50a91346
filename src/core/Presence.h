// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lorvane {

/// The floating pill, as far as the controller moves it. What it shows it reads from the controller's phase.
class Pill {
 public:
    virtual ~Pill() = default;
    /// Puts it in its place, without animation, and to the front.
    virtual void show() = 0;
    virtual void orderOut() = 0;
};

/// The program's windows.
class Windows {
 public:
    virtual ~Windows() = default;
    virtual void openHomeWindow() = 0;
    virtual void presentOnboarding() = 0;
    virtual void closeOnboarding() = 0;
    virtual void openFeedback(const QString& context) = 0;
    virtual void openWhatsNew() = 0;
    virtual void applyAppearance(const QString& appearance) = 0;
};

/// The sound of a text that was pasted.
class Chime {
 public:
    virtual ~Chime() = default;
    virtual void play() = 0;
};

} // namespace lorvane
