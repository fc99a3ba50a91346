// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TypingAttempt.h"
#include "input/FieldProbe.h"

#include <QString>

#include <optional>
#include <variant>

/// The decisions of live typing as values: what to do, given what was read. Nothing here waits, reads or
/// posts. Positions and counts are UTF-16 units unless said otherwise.
namespace lorvane {

/// UTF-16 units in one post.
constexpr qsizetype unitsInOnePost = 12;
/// At or above so many units typed, a failure is not that of the first fragment.
constexpr qsizetype unitsOfFirstFragment = 13;
/// The most right arrows that catch up a lagging caret while a fragment is awaited.
constexpr qint64 mostCatchUp = 64;
/// The most right arrows before text is taken back or the rest is pasted.
constexpr qint64 mostRightArrows = 4999;

/// How many units from `from` on go out in one post. A pair of surrogates is never cut; a character that no
/// way may carry ends the post before it, so 0 means that none can go out. Line feeds and tabs are carried
/// where `lineBreaks` says so, other control characters never.
[[nodiscard]] qsizetype nextCut(const QString& text, qsizetype from, bool lineBreaks);

/// Characters as a user counts them, which one press of backspace takes away.
[[nodiscard]] qsizetype graphemeCount(const QString& text);
/// The first `units` of a text, as far as there are so many. Half of a pair at the cut becomes U+FFFD.
[[nodiscard]] QString firstUnits(const QString& text, qsizetype units);

/// Length and caret of the armed field at one moment.
struct CaretReading {
    qint64 length = 0;
    qint64 caret = 0;
    friend bool operator==(const CaretReading&, const CaretReading&) = default;
};

/// What the reads of the field say while one post is awaited.
class ArrivalWatch {
 public:
    enum class Verdict {
        pending,
        arrived,  ///< text and caret are where the count says
        overfull, ///< more text stands in the field than was typed
    };

    ArrivalWatch(qint64 expectedCaret, qint64 slack) : expected_(expectedCaret), slack_(slack) {}

    Verdict take(const CaretReading& reading);
    /// At the deadline: how many right arrows may bring a lagging caret to its place; 0 for none.
    [[nodiscard]] qint64 catchUp() const;
    [[nodiscard]] bool isArrived(const CaretReading& reading) const;

 private:
    qint64 expected_;
    qint64 slack_;
    qint64 behind_ = 0;
    bool unknown_ = true;
};

namespace arming {
struct CouldNotKeepUp {
    friend bool operator==(const CouldNotKeepUp&, const CouldNotKeepUp&) = default;
};
struct NoAccessibility {
    friend bool operator==(const NoAccessibility&, const NoAccessibility&) = default;
};
struct Unreadable {
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
};
struct TextAfter {
    qint64 caret = 0;
    qint64 length = 0;
    friend bool operator==(const TextAfter&, const TextAfter&) = default;
};
struct Armed {
    qint64 caret = 0;
    qint64 slack = 0;
    friend bool operator==(const Armed&, const Armed&) = default;
};
} // namespace arming
using ArmingDecision = std::variant<arming::CouldNotKeepUp, arming::NoAccessibility, arming::Unreadable,
                                    arming::TextAfter, arming::Armed>;

/// Before the field is looked at; nothing when it is to be looked at.
[[nodiscard]] std::optional<ArmingDecision> armingWithoutField(bool isListed, bool hasTarget);
[[nodiscard]] ArmingDecision armingFor(const std::optional<FieldProbe>& probe);
[[nodiscard]] QString describe(const ArmingDecision& decision, const QString& applicationName);

namespace settling {
struct HandOver {
    friend bool operator==(const HandOver&, const HandOver&) = default;
};
/// Nothing of it stands in the field.
struct PasteWhole {
    friend bool operator==(const PasteWhole&, const PasteWhole&) = default;
};
struct Landed {
    friend bool operator==(const Landed&, const Landed&) = default;
};
/// What was typed is not how the text begins.
struct TakeBack {
    friend bool operator==(const TakeBack&, const TakeBack&) = default;
};
struct TypeRest {
    QString rest;
    friend bool operator==(const TypeRest&, const TypeRest&) = default;
};
/// It is the final text, but its last post was not confirmed in time.
struct Confirm {
    friend bool operator==(const Confirm&, const Confirm&) = default;
};
struct PasteRest {
    QString rest;
    friend bool operator==(const PasteRest&, const PasteRest&) = default;
};
} // namespace settling
using SettleDecision =
    std::variant<settling::HandOver, settling::PasteWhole, settling::Landed, settling::Confirm,
                 settling::TakeBack, settling::TypeRest, settling::PasteRest>;

[[nodiscard]] SettleDecision settleDecision(const TypingAttempt& attempt, const QString& text);
/// What is left of a text that begins with `typed`.
[[nodiscard]] QString restAfter(const QString& typed, const QString& text);
/// Empty when there is nothing to say.
[[nodiscard]] QString describe(const SettleDecision& decision, const TypingAttempt& attempt);

/// Where the caret stands to the end of what was typed.
struct CaretAim {
    enum class Kind {
        lost,      ///< the field cannot be read, or where typing began is not known
        past,      ///< something stands before the caret that we did not type
        missing,   ///< some of what was typed is not in the field: what stands there instead is the user's
        reachable, ///< `gap` right arrows from the end; 0 when it is there
    };
    Kind kind = Kind::lost;
    qint64 gap = 0;
    friend bool operator==(const CaretAim&, const CaretAim&) = default;
};
[[nodiscard]] CaretAim caretAim(const TypingAttempt& attempt, const std::optional<CaretReading>& reading);
/// The caret behind all that was typed; nothing when it is not known where typing began.
[[nodiscard]] std::optional<qint64> endOfTyped(const TypingAttempt& attempt);

} // namespace lorvane
