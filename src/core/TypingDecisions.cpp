// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TypingDecisions.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace lorvane {

namespace {

template <typename... Cases>
struct Match : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Match(Cases...) -> Match<Cases...>;

bool isCarried(char32_t character, bool lineBreaks) {
    if (character == U'\n' || character == U'\t') {
        return lineBreaks;
    }
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

/// The character at a position; half of a pair that stands alone is given as it is.
char32_t characterAt(const QString& text, qsizetype at) {
    const QChar unit = text[at];
    const bool isPair = unit.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    return isPair ? QChar::surrogateToUcs4(unit, text[at + 1]) : unit.unicode();
}

bool beginsWith(const QString& text, const QString& typed) {
    if (!text.startsWith(typed)) {
        return false;
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(typed.size());
    return typed.size() == text.size() || finder.isAtBoundary();
}

} // namespace

qsizetype nextCut(const QString& text, qsizetype from, bool lineBreaks) {
    qsizetype end = from;
    while (end < text.size()) {
        const char32_t character = characterAt(text, end);
        const qsizetype units = QChar::requiresSurrogates(character) ? 2 : 1;
        if (!isCarried(character, lineBreaks) || end + units - from > unitsInOnePost) {
            break;
        }
        end += units;
    }
    return end - from;
}

qsizetype graphemeCount(const QString& text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0) {
        ++count;
    }
    return count;
}

QString firstUnits(const QString& text, qsizetype units) {
    QString first = text.left(units);
    if (!first.isEmpty() && first.back().isHighSurrogate()) {
        first.back() = QChar::ReplacementCharacter;
    }
    return first;
}

bool ArrivalWatch::isArrived(const CaretReading& reading) const {
    return reading.caret == expected_ && reading.length == expected_ + slack_;
}

ArrivalWatch::Verdict ArrivalWatch::take(const CaretReading& reading) {
    if (isArrived(reading)) {
        return Verdict::arrived;
    }
    if (reading.length > expected_ + slack_) {
        return Verdict::overfull;
    }
    if (reading.length == expected_ + slack_) {
        behind_ = expected_ - reading.caret;
        unknown_ = false;
    }
    return Verdict::pending;
}

qint64 ArrivalWatch::catchUp() const {
    return !unknown_ && behind_ >= 1 && behind_ <= mostCatchUp ? behind_ : 0;
}

std::optional<ArmingDecision> armingWithoutField(bool isListed, bool hasTarget) {
    if (isListed) {
        return arming::CouldNotKeepUp();
    }
    if (!hasTarget) {
        return arming::NoAccessibility();
    }
    return std::nullopt;
}

ArmingDecision armingFor(const std::optional<FieldProbe>& probe) {
    if (!probe) {
        return arming::Unreadable();
    }
    if (!probe->blankAfter) {
        return arming::TextAfter{probe->caret, probe->length};
    }
    return arming::Armed{probe->caret, probe->length - probe->caret};
}

QString describe(const ArmingDecision& decision, const QString& applicationName) {
    const auto notArmed = [&](const QString& reason) {
        return QStringLiteral("[tirra-type] not armed in %1: %2").arg(applicationName, reason);
    };
    return std::visit(
        Match{[&](const arming::CouldNotKeepUp&) {
                  return notArmed(QStringLiteral("it could not keep up before"));
              },
              [&](const arming::NoAccessibility&) { return notArmed(QStringLiteral("no Accessibility")); },
              [&](const arming::Unreadable&) { return notArmed(QStringLiteral("the field cannot be read")); },
              [&](const arming::TextAfter& field) {
                  return notArmed(QStringLiteral("caret at %1 of %2, real text after it")
                                      .arg(field.caret)
                                      .arg(field.length));
              },
              [&](const arming::Armed& field) {
                  return QStringLiteral("[tirra-type] armed in %1: caret at %2, %3 blank after it")
                      .arg(applicationName, QString::number(field.caret), QString::number(field.slack));
              }},
        decision);
}

SettleDecision settleDecision(const TypingAttempt& attempt, const QString& text) {
    if (attempt.typingStuck) {
        return settling::HandOver();
    }
    if (!attempt.typingTarget || attempt.typedLive.isEmpty() || !attempt.typedStart) {
        return settling::PasteWhole();
    }
    if (attempt.typedLive == text || attempt.typedLive.trimmed() == text) {
        return attempt.typingHalted ? SettleDecision(settling::Confirm()) : settling::Landed();
    }
    if (!beginsWith(text, attempt.typedLive)) {
        return settling::TakeBack();
    }
    const QString rest = restAfter(attempt.typedLive, text);
    if (attempt.typingHalted) {
        return settling::PasteRest{rest};
    }
    return settling::TypeRest{rest};
}

QString restAfter(const QString& typed, const QString& text) { return text.mid(typed.size()); }

QString describe(const SettleDecision& decision, const TypingAttempt& attempt) {
    return std::visit(
        Match{[&](const settling::HandOver&) {
                  return QStringLiteral(
                      "[tirra-type] settle: typing could not be undone — handing the text over");
              },
              [&](const settling::PasteWhole&) {
                  return QStringLiteral(
                             "[tirra-type] settle: nothing was typed live (target %1, typed %2) — pasting")
                      .arg(attempt.typingTarget ? QStringLiteral("kept") : QStringLiteral("gone"))
                      .arg(attempt.typedLive.size());
              },
              [&](const settling::Landed&) {
                  return QStringLiteral(
                             "[tirra-type] settle: %1 characters typed live and they are the final text")
                      .arg(attempt.typedLive.size());
              },
              [&](const settling::TakeBack&) {
                  return QStringLiteral("[tirra-dictate] final text differs from the stream — retyping");
              },
              [&](const auto&) { return QString(); }},
        decision);
}

std::optional<qint64> endOfTyped(const TypingAttempt& attempt) {
    if (!attempt.typedStart) {
        return std::nullopt;
    }
    return *attempt.typedStart + attempt.typedLive.size();
}

CaretAim caretAim(const TypingAttempt& attempt, const std::optional<CaretReading>& reading) {
    const auto end = endOfTyped(attempt);
    if (!end || !reading) {
        return {};
    }
    if (reading->caret > *end) {
        return {CaretAim::Kind::past, 0};
    }
    if (reading->length < *end + attempt.typingSlack) {
        return {CaretAim::Kind::missing, 0};
    }
    return {CaretAim::Kind::reachable, *end - reading->caret};
}

} // namespace lorvane
