// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/DictationStatus.h"
#include "core/LiveTyping.h"
#include "core/Presence.h"
#include "core/TextInsertion.h"
#include "input/Accessibility.h"

namespace lorvane {

/// Brings a take's final text to the user, by the best way there is, and shows how that went: typed live,
/// pasted, or left on the clipboard. Main thread.
class TextLanding {
 public:
    TextLanding(const Foundation& foundation, DictationStatus& status, Accessibility& accessibility,
                LiveTyping& typing, TextInsertion& insertion, Chime& chime);
    TextLanding(const TextLanding&) = delete;
    TextLanding& operator=(const TextLanding&) = delete;

    [[nodiscard]] LiveTyping& typing() { return typing_; }
    /// A take that is cancelled while its text is being pasted is pasted all the same, and shows nothing.
    QCoro::Task<void> land(QString text, TaskScope scope);
    /// Leaves a text on the clipboard, without a word.
    void copy(const QString& text) { insertion_.handOver(text); }

 private:
    void copyWithoutAccessibility(const QString& text);
    void handOver(const QString& text);
    void showPasted(const QString& text, const PasteOutcome& outcome);
    void showUnanswered();

    const Foundation foundation_;
    DictationStatus& status_;
    Accessibility& accessibility_;
    LiveTyping& typing_;
    TextInsertion& insertion_;
    Chime& chime_;
    /// The user was sent to the settings already in this run of the program.
    bool didPromptAX_ = false;
};

} // namespace lorvane
