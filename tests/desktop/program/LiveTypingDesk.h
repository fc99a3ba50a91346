// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DictationDesk.h"

#include <ostream>
#include <string>

namespace lorvane {

/// Takes whose text streams while the test looks at the application that it is typed into.
class LiveTypingDesk : public DictationDesk {
 protected:
    /// What the user has written before: it must never change.
    static const QString own;

    /// The program with a backend that knows everyone.
    void startProgram(const QJsonObject& preferences = {});
    /// A take by the hold key, up to its stream, which is open and has said nothing yet.
    LiveStream dictate();
    /// Says the text in fragments and waits until it stands behind the user's own.
    static ::testing::AssertionResult isTyped(const LiveStream& stream, const QString& text,
                                              const DesktopApp& application);
    static ::testing::AssertionResult holds(const DesktopApp& application, const QString& text);
    /// Whether the program's log has a line with this, now or soon; says what it has instead.
    ::testing::AssertionResult logs(const QString& part) const;
    ::testing::AssertionResult endsIn(const QString& notice);

    static const QString copied; // the notice that hands the text over
};

/// An application to type into, opened with a text and the caret behind it.
struct Application {
    const char* name;
    std::unique_ptr<DesktopApp> (*open)(const QString& text);
};
std::ostream& operator<<(std::ostream& out, const Application& application);
std::string nameOf(const ::testing::TestParamInfo<Application>& parameter);

namespace application {
extern const Application mousepad;
extern const Application gnomeTextEditor;
extern const Application featherpad;
extern const Application qtFields;
extern const Application writer;
extern const Application chromium;
extern const Application firefox;
} // namespace application

} // namespace lorvane
