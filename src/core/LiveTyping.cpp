// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/LiveTyping.h"

#include "base/PreferenceCatalogue.h"
#include "input/KeyEvents.h"

namespace lorvane {

namespace {

constexpr Duration arrivalAwaited = std::chrono::milliseconds(200);
constexpr Duration betweenReads = std::chrono::milliseconds(3);
/// A way that answers when it is done shows its effect long before.
constexpr Duration effectAwaited = std::chrono::milliseconds(60);
/// Longer than anything posted is awaited.
constexpr Duration untilFinish = std::chrono::milliseconds(250);
constexpr std::uint32_t anyModifier =
    modifierFlag::shift | modifierFlag::control | modifierFlag::option | modifierFlag::command;

const QString modifierHeld = QStringLiteral("modifier-held");
const QString noStart = QStringLiteral("no-start");
const QString firstFragment = QStringLiteral("first-fragment");
const QString notAPrefix = QStringLiteral("not-a-prefix");

QString orUnknown(const QString& name) { return name.isEmpty() ? QStringLiteral("?") : name; }

/// Counts down when what it counts ends, however it ends.
class Counted {
 public:
    explicit Counted(int& count) : count_(count) { ++count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --count_; }

 private:
    int& count_;
};

} // namespace

LiveTyping::LiveTyping(const Foundation& foundation, TypingDesktop desktop, TextInsertion& insertion)
    : foundation_(foundation), desktop_(std::move(desktop)), insertion_(insertion),
      field_(foundation, desktop_.fields, desktop_.workspace, desktop_.keys),
      fragments_(foundation_.log, desktop_.posters) {}

QCoro::Task<void> LiveTyping::armTyping(TaskScope scope) {
    finishLater_.reset();
    const auto attempt = std::make_shared<TypingAttempt>();
    attempt_ = attempt;
    while (takingBack_ > 0) {
        co_await sleep(foundation_.clock, betweenReads, scope);
    }
    const auto front = desktop_.workspace.frontmostApplication();
    if (desktop_.accessibility.isTrusted() && front) {
        attempt->typingTarget = front->processId;
    }
    co_await aim(attempt, front.value_or(RunningApplication()), scope);
}

QCoro::Task<void> LiveTyping::aim(Attempt attempt, RunningApplication front, TaskScope scope) {
    attempt->application = front;
    const auto listed = foundation_.preferences.get(preference::appsThatCannotKeepUp);
    const bool isListed = !front.bundleIdentifier.isEmpty() && listed.contains(front.bundleIdentifier);
    std::optional<ArmingDecision> decision = armingWithoutField(isListed, attempt->typingTarget.has_value());
    std::optional<FieldElement> element;
    std::optional<FieldProbe> probe;
    if (!decision) {
        element = co_await field_.focused(front.processId, scope);
        if (element) {
            probe = co_await field_.probe(*element, scope);
        }
        decision = armingFor(probe);
    }
    if (const auto* const armed = std::get_if<arming::Armed>(&*decision)) {
        attempt->typedStart = armed->caret;
        attempt->typingSlack = armed->slack;
        attempt->typingElement = element;
        attempt->multiLine = probe->multiLine;
    } else {
        attempt->typingTarget.reset();
    }
    log(describe(*decision, orUnknown(front.localizedName)));
}

QCoro::Task<void> LiveTyping::typeLive(QString fragment, TaskScope scope) {
    const Attempt attempt = attempt_;
    const TaskScope onward = scope.shielded();
    if (attempt->typingHalted || !attempt->typingTarget || fragment.isEmpty()) {
        co_return;
    }
    if ((desktop_.keys.modifierFlags() & anyModifier) != 0) {
        co_await abandon(attempt, modifierHeld, onward);
        co_return;
    }
    const auto front = desktop_.workspace.frontmostApplication();
    if (!front || front->processId != *attempt->typingTarget) {
        log(QStringLiteral("[tirra-type] focus left %1 after %2 characters — stopping there")
                .arg(frontmostName(), QString::number(attempt->typedLive.size())));
        attempt->typingTarget.reset();
        co_return;
    }
    if (!attempt->typedStart) {
        co_await abandon(attempt, noStart, onward);
        co_return;
    }
    const TypedFragment typed = co_await typeFragment(attempt, fragment, onward);
    if (typed.isComplete) {
        attempt->typedLive += fragment;
    } else {
        co_await typeFailed(attempt, typed, fragment, onward);
    }
}

QCoro::Task<void> LiveTyping::typeFailed(Attempt attempt, TypedFragment typed, QString fragment,
                                         TaskScope scope) {
    attempt->typedLive += firstUnits(fragment, typed.units);
    const QString name = frontmostName();
    const QString count = QString::number(attempt->typedLive.size());
    if (typed.endsAtBreak) {
        attempt->typingHalted = true;
        log(QStringLiteral("[tirra-type] %1 would take the next character for a key after %2 characters — "
                           "keeping them and pasting the rest")
                .arg(name, count));
    } else if (typed.isOffTarget) {
        attempt->typingHalted = true;
        log(QStringLiteral("[tirra-type] lost the caret in %1 after %2 characters — stopping there")
                .arg(name, count));
    } else if (typed.hasNoWay) {
        attempt->typingHalted = true;
        log(QStringLiteral("[tirra-type] there is no way into %1 after %2 characters — pasting the rest")
                .arg(name, count));
    } else if (attempt->typedLive.size() < unitsOfFirstFragment) {
        rememberItCannotKeepUp();
        log(QStringLiteral("[tirra-type] %1 did not take the first fragment — pasting this one whole, and "
                           "not trying again")
                .arg(name));
        co_await abandon(attempt, firstFragment, scope);
    } else {
        attempt->typingHalted = true;
        log(QStringLiteral("[tirra-type] %1 stopped keeping up after %2 characters — keeping them and "
                           "pasting the rest")
                .arg(name, count));
    }
}

QCoro::Task<TypedFragment> LiveTyping::typeFragment(Attempt attempt, QString text, TaskScope scope) {
    if (text.isEmpty()) {
        TypedFragment nothing;
        nothing.isComplete = true;
        co_return nothing;
    }
    const bool secure = co_await field_.isSecure(scope);
    if (secure) {
        co_return TypedFragment();
    }
    const qint64 base = endOfTyped(*attempt).value_or(0);
    // Since the last post was read back, the user may have gone to another field or clicked into the text.
    const Arrival aimed = co_await awaitCaret(attempt, base, FragmentTyping::Post(), scope);
    if (aimed != Arrival::arrived) {
        TypedFragment nothing;
        nothing.isOffTarget = true;
        co_return nothing;
    }
    const FragmentTyping::Check check = [this, attempt, base, scope](FragmentTyping::Post post) {
        return awaitCaret(attempt, base + post.count, post, scope);
    };
    const TypedFragment typed = co_await fragments_.typeFragment(attempt, base, text, check, scope);
    co_return typed;
}

QCoro::Task<Arrival> LiveTyping::awaitCaret(Attempt attempt, qint64 expected, FragmentTyping::Post post,
                                            TaskScope scope) {
    ArrivalWatch watch(expected, attempt->typingSlack);
    const qint64 before = expected - post.units;
    const CaretReading untouched{before + attempt->typingSlack, before};
    bool sawEffect = false;
    const Instant posted = foundation_.clock.now();
    while (foundation_.clock.now() < posted + arrivalAwaited) {
        const auto state = co_await field_.state(*attempt, scope);
        const auto verdict = state ? watch.take(*state) : ArrivalWatch::Verdict::pending;
        if (verdict == ArrivalWatch::Verdict::arrived) {
            co_return Arrival::arrived;
        }
        if (verdict == ArrivalWatch::Verdict::overfull) {
            co_return Arrival::failed;
        }
        sawEffect = sawEffect || state != untouched;
        const bool shouldShow = post.isAnswered && foundation_.clock.now() >= posted + effectAwaited;
        if (post.isTrial && !sawEffect && shouldShow) {
            co_return Arrival::noEffect;
        }
        co_await sleep(foundation_.clock, betweenReads, scope);
    }
    if (post.isTrial && !sawEffect) {
        co_return Arrival::noEffect;
    }
    const Arrival late = co_await catchUp(attempt, watch, expected, scope);
    co_return late;
}

QCoro::Task<Arrival> LiveTyping::catchUp(Attempt attempt, ArrivalWatch watch, qint64 expected,
                                         TaskScope scope) {
    const qint64 behind = watch.catchUp();
    if (behind == 0) {
        co_return Arrival::failed;
    }
    co_await field_.moveRight(*attempt, behind, scope);
    const auto state = co_await field_.state(*attempt, scope);
    if (!state || !watch.isArrived(*state)) {
        co_return Arrival::failed;
    }
    log(QStringLiteral("[tirra-type] caret was %1 behind at %2 characters — caught it up")
            .arg(behind)
            .arg(expected));
    co_return Arrival::arrived;
}

QCoro::Task<SettleOutcome> LiveTyping::settleTyping(QString text, TaskScope scope) {
    const Attempt attempt = attempt_;
    const TaskScope onward = scope.shielded();
    const SettleDecision decision = settleDecision(*attempt, text);
    if (const QString line = describe(decision, *attempt); !line.isEmpty()) {
        log(line);
    }
    SettleOutcome outcome = SettleOutcome::landed;
    if (std::holds_alternative<settling::HandOver>(decision)) {
        outcome = SettleOutcome::handOver;
    } else if (std::holds_alternative<settling::PasteWhole>(decision)) {
        outcome = SettleOutcome::paste;
    } else if (std::holds_alternative<settling::Confirm>(decision)) {
        outcome = co_await confirm(attempt, onward);
    } else if (std::holds_alternative<settling::TakeBack>(decision)) {
        const bool clean = co_await abandon(attempt, notAPrefix, onward);
        outcome = clean ? SettleOutcome::paste : SettleOutcome::handOver;
    } else if (const auto* const toType = std::get_if<settling::TypeRest>(&decision)) {
        outcome = co_await typeRest(attempt, text, toType->rest, onward);
    } else if (const auto* const toPaste = std::get_if<settling::PasteRest>(&decision)) {
        outcome = co_await pasteRest(attempt, toPaste->rest, onward);
    }
    co_return outcome;
}

QCoro::Task<SettleOutcome> LiveTyping::confirm(Attempt attempt, TaskScope scope) {
    const qint64 end = endOfTyped(*attempt).value_or(0);
    (void)co_await field_.stateWithLateText(*attempt, scope);
    const Arrival late = co_await awaitCaret(attempt, end, FragmentTyping::Post(), scope);
    if (late == Arrival::arrived) {
        log(describe(settling::Landed(), *attempt));
        co_return SettleOutcome::landed;
    }
    log(QStringLiteral("[tirra-type] settle: not all of the %1 characters typed live are in the field — "
                       "handing the text over")
            .arg(attempt->typedLive.size()));
    co_return SettleOutcome::handOver;
}

QCoro::Task<SettleOutcome> LiveTyping::typeRest(Attempt attempt, QString text, QString rest,
                                                TaskScope scope) {
    const TypedFragment typed = co_await typeFragment(attempt, rest, scope);
    if (typed.isComplete) {
        co_return SettleOutcome::landed;
    }
    attempt->typedLive += firstUnits(rest, typed.units);
    attempt->typingHalted = true;
    const QString left = restAfter(attempt->typedLive, text);
    SettleOutcome outcome = SettleOutcome::landed;
    if (left.isEmpty()) {
        outcome = co_await confirm(attempt, scope);
    } else {
        outcome = co_await pasteRest(attempt, left, scope);
    }
    co_return outcome;
}

QCoro::Task<SettleOutcome> LiveTyping::pasteRest(Attempt attempt, QString rest, TaskScope scope) {
    const auto before = co_await field_.stateWithLateText(*attempt, scope);
    const CaretAim target = caretAim(*attempt, before);
    bool isAtEnd = false;
    if (target.kind == CaretAim::Kind::reachable) {
        co_await field_.moveRight(*attempt, target.gap, scope);
        const auto moved = co_await field_.state(*attempt, scope);
        isAtEnd = moved && moved->caret == endOfTyped(*attempt);
    }
    if (!isAtEnd) {
        log(QStringLiteral(
                "[tirra-type] settle: the caret is not behind our %1 characters — handing the text "
                "over")
                .arg(attempt->typedLive.size()));
        co_return SettleOutcome::handOver;
    }
    const PasteOutcome pasted = co_await insertion_.pasteText(rest, scope);
    co_return pasted.kind == PasteOutcome::Kind::ok ? SettleOutcome::landed : SettleOutcome::handOver;
}

QCoro::Task<bool> LiveTyping::abandonTyping(QString reason, TaskScope scope) {
    const Attempt attempt = attempt_;
    const bool clean = co_await abandon(attempt, reason, scope.shielded());
    co_return clean;
}

/// Whoever types still finds the target gone from the first moment on.
QCoro::Task<bool> LiveTyping::abandon(Attempt attempt, QString reason, TaskScope scope) {
    const TypingAttempt typed = *attempt;
    attempt->disarm();
    if (typed.typedLive.isEmpty()) {
        co_return true;
    }
    const Counted busy(takingBack_);
    const bool clean = co_await field_.takeBack(typed, reason, scope);
    if (!clean) {
        attempt->typingStuck = true;
    }
    co_return clean;
}

void LiveTyping::endTyping() {
    finishLater_ = foundation_.clock.after(untilFinish, [this] { fragments_.finish(); });
}

QString LiveTyping::frontmostName() const {
    const auto front = desktop_.workspace.frontmostApplication();
    return orUnknown(front ? front->localizedName : QString());
}

void LiveTyping::rememberItCannotKeepUp() {
    const auto front = desktop_.workspace.frontmostApplication();
    if (!front || front->bundleIdentifier.isEmpty()) {
        return;
    }
    QStringList listed = foundation_.preferences.get(preference::appsThatCannotKeepUp);
    if (!listed.contains(front->bundleIdentifier)) {
        listed.append(front->bundleIdentifier);
        foundation_.preferences.set(preference::appsThatCannotKeepUp, listed);
    }
}

} // namespace lorvane
