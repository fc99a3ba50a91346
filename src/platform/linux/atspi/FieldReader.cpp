// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/FieldReader.h"

#include <algorithm>
#include <utility>

namespace lorvane {

namespace {
constexpr qint64 firstPiece = 256;
constexpr qint64 largestPiece = 1 << 18;
/// A reading that follows by itself, with nothing done in between.
constexpr Duration atOnce = std::chrono::milliseconds(2);
/// A field that nobody reads any more is not worth its application's events.
constexpr Duration watchRest = std::chrono::seconds(10);
constexpr qsizetype mostApplications = 256;
} // namespace

FieldReader::FieldReader(AtspiBus& bus, Clock& clock, PatienceList& patience)
    : bus_(bus), clock_(clock), patience_(patience) {}

QCoro::Task<std::optional<FieldReading>> FieldReader::read(AccessibleRef field, Instant deadline,
                                                           TaskScope scope) {
    const Questions asked = takeAhead(field, left(deadline));
    const auto numbers = co_await readNumbers(asked, deadline, scope);
    if (!numbers) {
        co_return std::nullopt;
    }
    const auto toolkit = co_await toolkitOf(field.bus, deadline, scope);
    const auto after = co_await readAfter(asked, *numbers, deadline, scope);
    if (!toolkit || !after) {
        co_return std::nullopt;
    }
    std::optional<FieldReading> reading;
    if (assumedUnit(field.bus) == TextUnit::utf16) {
        reading = FieldReading{numbers->count, numbers->caret, *after};
    } else {
        reading = co_await inCodePoints(field, *numbers, *after, deadline, scope);
    }
    if (reading) {
        reading = co_await withoutAdditions(field, *numbers, *reading, deadline, scope);
    }
    if (!reading || reading->caret < 0 || reading->caret > reading->length) {
        co_return std::nullopt;
    }
    reading->multiLine = numbers->multiLine;
    const Place place{numbers->caret, numbers->count, assumedUnit(field.bus)};
    seen_ = Seen{field, reading->caret, place};
    co_return reading;
}

QCoro::Task<std::optional<FieldReader::Place>> FieldReader::placeOf(AccessibleRef field, qint64 caret,
                                                                    Instant deadline, TaskScope scope) {
    const auto isThere = [&] { return seen_ && seen_->field == field && seen_->caret == caret; };
    if (isThere()) {
        co_return seen_->place;
    }
    const auto reading = co_await read(field, deadline, scope);
    if (!reading || caret < 0 || caret > reading->length) {
        co_return std::nullopt;
    }
    Place place = seen_->place;
    if (isThere()) {
        co_return place;
    }
    const auto text = co_await fetchBefore(field, place.count, deadline, scope);
    if (!text) {
        co_return std::nullopt;
    }
    place.position = lengthIn(place.unit, text->left(caret));
    co_return place;
}

FieldReader::Questions FieldReader::ask(const AccessibleRef& field, Duration bound) {
    Questions asked;
    asked.field = field;
    asked.states = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetState"), {}, bound);
    asked.role = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetRole"), {}, bound);
    asked.count = bus_.property(field, atspi::textInterface, QStringLiteral("CharacterCount"), bound);
    asked.caret = bus_.property(field, atspi::textInterface, QStringLiteral("CaretOffset"), bound);
    asked.selections = bus_.call(field, atspi::textInterface, QStringLiteral("GetNSelections"), {}, bound);
    if (!seen_ || !(seen_->field == field)) {
        return asked;
    }
    asked.expected = seen_->place;
    const qint64 behind = asked.expected.count - asked.expected.position;
    if (behind > 0 && behind <= firstPiece) {
        const QVariantList range{static_cast<int>(asked.expected.position),
                                 static_cast<int>(asked.expected.count)};
        asked.after = bus_.call(field, atspi::textInterface, QStringLiteral("GetText"), range, bound);
    }
    return asked;
}

void FieldReader::askAhead(const AccessibleRef& field, Duration bound) {
    ahead_.reset();
    if (seen_ && seen_->field == field) {
        ahead_ = ask(field, bound);
        aheadEnd_ = Instant::max();
    }
}

void FieldReader::endAhead() { aheadEnd_ = clock_.now() + atOnce; }

FieldReader::Questions FieldReader::takeAhead(const AccessibleRef& field, Duration bound) {
    const auto ahead = std::exchange(ahead_, std::nullopt);
    const bool fits = ahead && ahead->field == field && clock_.now() < aheadEnd_;
    return fits ? *ahead : ask(field, bound);
}

void FieldReader::expectBehind(const AccessibleRef& field, Place place, qint64 caret, const QString& text) {
    ahead_.reset();
    place.position += lengthIn(place.unit, text);
    place.count += lengthIn(place.unit, text);
    seen_ = Seen{field, caret + text.size(), place};
}

QCoro::Task<std::optional<FieldReader::Numbers>> FieldReader::readNumbers(Questions asked, Instant deadline,
                                                                          TaskScope scope) {
    const auto stateReply = co_await asked.states.wait(scope);
    note(asked.field, stateReply);
    const auto roleReply = co_await asked.role.wait(scope);
    const auto countReply = co_await asked.count.wait(scope);
    const auto caretReply = co_await asked.caret.wait(scope);
    const auto selectedReply = co_await asked.selections.wait(scope);
    const auto states = stateReply.states();
    const auto role = roleReply.number();
    const auto count = countReply.number();
    auto caret = caretReply.number();
    if (!states || !role || !count || !caret || *count < 0 || !states->has(atspi::stateEditable) ||
        *role == atspi::rolePassword || *role == atspi::roleTerminal) {
        co_return std::nullopt;
    }
    if (selectedReply.number().value_or(0) > 0) {
        const auto start = co_await selectionStart(asked.field, deadline, scope);
        caret = start ? start : caret;
    }
    const bool multiLine = states->has(atspi::stateMultiLine) && !states->has(atspi::stateSingleLine);
    const Numbers numbers{*count, *caret, multiLine};
    if (numbers.caret < 0 || numbers.caret > numbers.count) {
        co_return std::nullopt;
    }
    co_return numbers;
}

QCoro::Task<std::optional<qint64>> FieldReader::selectionStart(AccessibleRef field, Instant deadline,
                                                               TaskScope scope) {
    const QVariantList first{0};
    const auto asked =
        bus_.call(field, atspi::textInterface, QStringLiteral("GetSelection"), first, left(deadline));
    const auto reply = co_await asked.wait(scope);
    co_return reply.number();
}

QCoro::Task<std::optional<QString>> FieldReader::readText(AccessibleRef field, qint64 from, qint64 to,
                                                          Instant deadline, TaskScope scope) {
    if (from >= to) {
        co_return QString();
    }
    const QVariantList range{static_cast<int>(from), static_cast<int>(to)};
    const auto asked =
        bus_.call(field, atspi::textInterface, QStringLiteral("GetText"), range, left(deadline));
    const auto reply = co_await asked.wait(scope);
    note(field, reply);
    auto text = reply.text();
    // Something stands there, so nothing is no answer.
    if (text && text->isEmpty()) {
        text.reset();
    }
    co_return text;
}

QCoro::Task<std::optional<QString>> FieldReader::fetchBefore(AccessibleRef field, qint64 to, Instant deadline,
                                                             TaskScope scope) {
    ++fetches_;
    auto text = co_await readText(field, 0, to, deadline, scope);
    co_return text;
}

QCoro::Task<std::optional<QString>> FieldReader::readAfter(Questions asked, Numbers numbers, Instant deadline,
                                                           TaskScope scope) {
    if (asked.after && asked.expected.count == numbers.count && asked.expected.position == numbers.caret) {
        const auto reply = co_await asked.after->wait(scope);
        auto text = reply.text();
        if (text && !text->isEmpty()) {
            co_return text;
        }
    }
    QString after;
    qint64 piece = firstPiece;
    for (qint64 at = numbers.caret; at < numbers.count && isBlank(after);) {
        const qint64 end = std::min(numbers.count, at + piece);
        const auto text = co_await readText(asked.field, at, end, deadline, scope);
        if (!text) {
            co_return std::nullopt;
        }
        after += *text;
        at = end;
        piece = std::min(4 * piece, largestPiece);
    }
    co_return after;
}

QCoro::Task<std::optional<QString>> FieldReader::toolkitOf(QString bus, Instant deadline, TaskScope scope) {
    if (const auto known = toolkits_.constFind(bus); known != toolkits_.constEnd()) {
        co_return *known;
    }
    const AccessibleRef root{bus, atspi::rootPath};
    const auto asked =
        bus_.property(root, atspi::applicationInterface, QStringLiteral("ToolkitName"), left(deadline));
    const auto reply = co_await asked.wait(scope);
    const auto name = reply.text();
    if (reply.timedOut()) {
        co_return std::nullopt;
    }
    if (toolkits_.size() >= mostApplications) {
        toolkits_.clear();
        units_.clear();
    }
    // An application that names no toolkit is taken for an unknown one.
    toolkits_.insert(bus, name.value_or(QString()));
    co_return toolkits_.value(bus);
}

QCoro::Task<std::optional<qint64>> FieldReader::pairsIn(AccessibleRef field, qint64 count, Instant deadline,
                                                        TaskScope scope) {
    watch(field);
    if (const auto known = ledger_.pairsFor(count)) {
        co_return known;
    }
    const auto text = co_await fetchBefore(field, count, deadline, scope);
    if (!text) {
        co_return std::nullopt;
    }
    const auto unit = provenUnit(*text, count, TextUnit::codePoints);
    if (!unit) {
        co_return std::nullopt;
    }
    const qint64 pairs = surrogatePairs(*text);
    if (pairs > 0) {
        units_.insert(field.bus, *unit);
    }
    if (*unit == TextUnit::codePoints && watched_ == field) {
        ledger_.enter(count, pairs);
    }
    co_return *unit == TextUnit::codePoints ? pairs : 0;
}

QCoro::Task<std::optional<FieldReading>> FieldReader::inCodePoints(AccessibleRef field, Numbers numbers,
                                                                   QString after, Instant deadline,
                                                                   TaskScope scope) {
    const auto pairs = co_await pairsIn(field, numbers.count, deadline, scope);
    if (!pairs) {
        co_return std::nullopt;
    }
    qint64 before = *pairs;
    if (*pairs > 0 && !isBlank(after)) {
        const auto head = co_await fetchBefore(field, numbers.caret, deadline, scope);
        if (!head && numbers.caret > 0) {
            co_return std::nullopt;
        }
        before = surrogatePairs(head.value_or(QString()));
    }
    co_return FieldReading{numbers.count + *pairs, numbers.caret + before, after};
}

QCoro::Task<std::optional<FieldReading>> FieldReader::withoutAdditions(AccessibleRef field, Numbers numbers,
                                                                       FieldReading reading, Instant deadline,
                                                                       TaskScope scope) {
    const QString toolkit = toolkitName(field.bus);
    const bool repeats = toolkitRepeatsLastLineFeed(toolkit);
    if (numbers.count == 0 || !(repeats || toolkitPadsText(toolkit))) {
        co_return reading;
    }
    const qint64 from = std::max<qint64>(0, numbers.count - 2);
    const auto end = co_await readText(field, from, numbers.count, deadline, scope);
    if (!end) {
        co_return std::nullopt;
    }
    const bool added = repeats ? end->endsWith(QLatin1Char('\n')) : endsWithFieldPadding(*end);
    const bool reachesEnd = reading.caret + reading.afterCaret.size() == reading.length;
    if (!repeats) {
        reading.afterCaret = withoutPadding(reading.afterCaret);
    } else if (added && reachesEnd) {
        reading.afterCaret.chop(1);
    }
    reading.length -= added ? 1 : 0;
    reading.caret = std::min(reading.caret, reading.length);
    co_return reading;
}

Duration FieldReader::left(Instant deadline) const {
    return std::clamp(deadline - clock_.now(), Duration::zero(), AtspiBus::callBound);
}

TextUnit FieldReader::assumedUnit(const QString& bus) const {
    if (const auto proven = units_.constFind(bus); proven != units_.constEnd()) {
        return *proven;
    }
    return unitOfToolkit(toolkits_.value(bus)).value_or(TextUnit::codePoints);
}

void FieldReader::note(const AccessibleRef& field, const AtspiReply& reply) {
    if (reply.timedOut()) {
        patience_.putAside(field.bus, clock_.now());
    }
}

void FieldReader::watch(const AccessibleRef& field) {
    watchEnd_ = clock_.after(watchRest, [this] { unwatch(); });
    if (watched_ == field) {
        return;
    }
    unwatch();
    watched_ = field;
    textWatch_ = bus_.watchText(field.bus, [this](const TextChange& change) { enterChange(change); });
}

void FieldReader::unwatch() {
    textWatch_.reset();
    watched_ = {};
    ledger_.invalidate();
}

void FieldReader::enterChange(const TextChange& change) {
    patience_.heardFrom(change.source.bus);
    if (change.source != watched_) {
        return;
    }
    if (change.inserted) {
        ledger_.inserted(change.characters, change.text);
    } else {
        ledger_.removed(change.characters, change.text);
    }
}

} // namespace lorvane
