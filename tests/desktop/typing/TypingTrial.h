// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/DesktopApps.h"
#include "support/LiveStream.h"
#include "support/LorvaneProgram.h"
#include "support/PhysicalKeyboard.h"

#include <optional>
#include <vector>

namespace lorvane {

/// An application that the program types or pastes into.
struct TypingTarget {
    QString name;    // as on the command line
    QString toolkit; // as in the table
    std::unique_ptr<DesktopApp> (*open)();
    bool isTerminal = false;
};
const std::vector<TypingTarget>& typingTargets();

/// What became of one take.
struct TypingResult {
    int characters = 0;
    int wrong = 0;        // edits between what stands there and what should
    double typing = 0;    // seconds from the first piece of the stream to `done`
    double afterDone = 0; // seconds from the stream's last line on the wire to `done`
    double processor = 0; // seconds that the program used meanwhile
    QString settled;      // in words, as the program's log has it
    QString seen;         // what stands there
};

/// The program with one application, for take after take; the application is emptied before each.
class TypingTrial {
 public:
    explicit TypingTrial(const TypingTarget& target);

    /// A take whose text streams in pieces with this time between them. Throws std::runtime_error when it
    /// does not end.
    TypingResult type(const QString& text, const QStringList& pieces,
                      std::chrono::milliseconds between = std::chrono::milliseconds(0));
    /// By which way the application was typed into, as the program's log names it; empty for none yet.
    [[nodiscard]] QString way() const;
    [[nodiscard]] QString log() const { return program_.log(); }
    [[nodiscard]] DesktopApp& application() { return *application_; }

 private:
    [[nodiscard]] static QString settled(const QString& log, int characters);

    ScriptedBackend backend_;
    LorvaneProgram program_; // first, as at a login: Firefox tells nothing before somebody listens
    std::unique_ptr<DesktopApp> application_;
    PhysicalKeyboard hand_;
};

} // namespace lorvane
