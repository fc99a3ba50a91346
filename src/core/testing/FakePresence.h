// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Presence.h"

#include <QStringList>

namespace lorvane {

/// A pill that is on screen or not.
class FakePill final : public Pill {
 public:
    void show() override {
        isShown = true;
        ++shows;
    }
    void orderOut() override { isShown = false; }

    bool isShown = false;
    int shows = 0;
};

/// Keeps what was asked of it, in order: "home", "onboarding", "close onboarding", "feedback <context>",
/// "what's new", "appearance <name>".
class FakeWindows final : public Windows {
 public:
    void openHomeWindow() override { calls.append("home"); }
    void presentOnboarding() override { calls.append("onboarding"); }
    void closeOnboarding() override { calls.append("close onboarding"); }
    void openFeedback(const QString& context) override { calls.append("feedback " + context); }
    void openWhatsNew() override { calls.append("what's new"); }
    void applyAppearance(const QString& appearance) override { calls.append("appearance " + appearance); }

    QStringList calls;
};

class FakeChime final : public Chime {
 public:
    void play() override { ++plays; }
    int plays = 0;
};

} // namespace lorvane
