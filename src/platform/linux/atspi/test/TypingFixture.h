// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/AtspiInsertion.h"
#include "platform/linux/atspi/test/DesktopFixture.h"

#include <algorithm>
#include <iostream>

namespace lorvane {

/// How a text went in, fragment after fragment.
struct TypingFigures {
    bool landed = false;
    qint64 units = 0;
    /// The last thing seen, for a failure.
    std::optional<FieldReading> seen;
    /// Fragments whose answer did not come in time.
    int late = 0;
    double seconds = 0;
    std::vector<double> fragmentMs;

    [[nodiscard]] double fragmentAt(int percent) const {
        std::vector<double> sorted = fragmentMs;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[(sorted.size() - 1) * static_cast<std::size_t>(percent) / 100];
    }
    friend std::ostream& operator<<(std::ostream& out, const TypingFigures& figures) {
        return out << "after " << figures.units << " units, last length "
                   << (figures.seen ? figures.seen->length : -1) << ", caret "
                   << (figures.seen ? figures.seen->caret : -1);
    }
    void print(const std::string& where) const {
        std::cout << where << ": " << static_cast<qint64>(static_cast<double>(units) / seconds)
                  << " characters/s, fragment p50 " << fragmentAt(50) << " ms, p95 " << fragmentAt(95)
                  << " ms, max " << fragmentAt(100) << " ms, late " << late << "\n";
    }
};

/// The insertion on the real accessibility bus of the virtual desktop.
class AtspiTypingTest : public AtspiDesktopTest {
 protected:
    PostingTarget targetIn(ProcessId process, qint64 caret) {
        const auto element = focusOnceTold(process);
        if (!element) {
            throw std::runtime_error("no field has the focus");
        }
        return {RunningApplication{process, {}, {}}, *element, caret};
    }
    bool canPost(const PostingTarget& target) {
        return finish<bool>([&](TaskScope scope) { return insertion.canPost(target, scope); });
    }
    PostOutcome post(const PostingTarget& target, const QString& text) {
        return finish<PostOutcome>([&](TaskScope scope) { return insertion.post(target, text, scope); });
    }
    std::optional<FieldReading> readFocused(ProcessId process) {
        const auto element = focus(process);
        return element ? read(*element) : std::nullopt;
    }
    /// The reading as soon as there is one.
    FieldReading readOnceTold(ProcessId process) {
        std::optional<FieldReading> reading;
        if (!until([&] { return (reading = readFocused(process)).has_value(); })) {
            throw std::runtime_error("the field cannot be read");
        }
        return *reading;
    }
    /// Posts until it is not refused: a program that answered late just now is put aside for a while. One
    /// that takes longer than the bound, as a busy machine's may, still takes the text; how often is counted.
    bool posts(const PostingTarget& target, const QString& text, int* late = nullptr) {
        auto outcome = PostOutcome::refused;
        const bool sent = until([&] { return (outcome = post(target, text)) != PostOutcome::refused; });
        if (late && outcome == PostOutcome::unknown) {
            ++*late;
        }
        return sent;
    }
    /// Posts fragment after fragment at the caret, each as soon as the one before has been read back.
    TypingFigures type(ProcessId process, const QStringList& fragments) {
        TypingFigures figures;
        const FieldReading start = readOnceTold(process);
        const qint64 slack = start.length - start.caret;
        PostingTarget target = targetIn(process, start.caret);
        const Instant begun = clock.now();
        for (const auto& fragment : fragments) {
            const Instant before = clock.now();
            if (!posts(target, fragment, &figures.late)) {
                return figures;
            }
            target.caret += fragment.size();
            std::optional<FieldReading> seen;
            const bool arrived = until([&] {
                seen = readFocused(process);
                return seen && seen->caret == target.caret && seen->length == target.caret + slack;
            });
            if (!arrived) {
                figures.seen = seen;
                return figures;
            }
            figures.fragmentMs.push_back(1000 * inSeconds(clock.now() - before));
            figures.units += fragment.size();
        }
        figures.seconds = inSeconds(clock.now() - begun);
        figures.landed = true;
        return figures;
    }

    AtspiInsertion insertion{bus, access, clock};
};

/// Of 12 UTF-16 units, with characters of one, two, three and four bytes.
inline const QString mixedFragment = QString::fromUtf8("aé漢😀 b🎉 xy");

/// A dictated text as fragments of 12 units: words, an emoji in each line, a line feed every ten fragments.
inline QStringList dictation(int fragments) {
    QStringList text;
    for (int i = 0; i < fragments; ++i) {
        text += i % 10 == 0   ? mixedFragment
                : i % 10 == 9 ? QStringLiteral("end of it. \n")
                              : QStringLiteral("some words, ");
    }
    return text;
}

} // namespace lorvane
