// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <variant>

namespace lorvane {

enum class NoticeSeverity { warning, error };

/// Nothing is going on.
struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
};
/// The microphone runs for a take.
struct Recording {
    friend bool operator==(const Recording&, const Recording&) = default;
};
/// The take has left the recorder and is on its way to text.
struct Processing {
    friend bool operator==(const Processing&, const Processing&) = default;
};
/// Text was delivered; shown briefly.
struct Done {
    friend bool operator==(const Done&, const Done&) = default;
};
/// A short message is shown briefly. `text` is in the user's words already.
struct Notice {
    QString text;
    NoticeSeverity severity = NoticeSeverity::warning;
    friend bool operator==(const Notice&, const Notice&) = default;
};

/// Where the cycle of a dictation stands. Two notices are equal when text and severity are.
using Phase = std::variant<Idle, Recording, Processing, Done, Notice>;

template <typename Case>
[[nodiscard]] bool isIn(const Phase& phase) {
    return std::holds_alternative<Case>(phase);
}

/// A take is alive: there is something that Escape can end.
[[nodiscard]] inline bool isTakeAlive(const Phase& phase) {
    return isIn<Recording>(phase) || isIn<Processing>(phase);
}

/// How the take in progress was started.
enum class Source { hold, toggle };

} // namespace lorvane
