// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TextInsertion.h"

#include <algorithm>

namespace lorvane {

namespace {

/// So that the target finds the new content when the keys arrive.
constexpr Duration beforeKeys = std::chrono::milliseconds(150);
constexpr Duration untilReturn = std::chrono::milliseconds(1600);
/// How long keys that nobody confirms are given to show an effect.
constexpr Duration untilDoubted = std::chrono::seconds(1);
/// Some applications use the answer to the last of several requests.
constexpr Duration quiet = std::chrono::milliseconds(150);
/// Against an application that never stops asking.
constexpr Duration longestNoise = std::chrono::seconds(5);

long long milliseconds(Duration duration) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

} // namespace

TextInsertion::TextInsertion(const Foundation& foundation, Pasteboard& pasteboard, PasteKeys& keys,
                             FieldAccess& fields, Workspace& workspace)
    : clock_(foundation.clock), log_(foundation.log), pasteboard_(pasteboard), keys_(keys), fields_(fields),
      workspace_(workspace), watch_(fields, workspace, foundation.clock) {}

QCoro::Task<PasteOutcome> TextInsertion::pasteText(QString text, TaskScope scope) {
    const auto loan = std::make_shared<Loan>();
    loan->text = text;
    loan->answered = std::exchange(answered_, std::nullopt);
    const bool secure = co_await fields_.isSecureEventInputEnabled(scope);
    if (secure) {
        PasteOutcome outcome;
        outcome.kind = PasteOutcome::Kind::secure;
        co_return outcome;
    }
    loan->before = co_await pasteboard_.snapshot(scope);
    if (scope.isCancelled()) {
        throw TaskCancelled();
    }
    const TaskScope onward = scope.shielded();
    co_await postKeys(loan, onward);
    returns_.start([this, loan](TaskScope own) { return giveBack(loan, std::move(own)); });
    co_return outcomeOf(*loan);
}

QCoro::Task<void> TextInsertion::postKeys(std::shared_ptr<Loan> loan, TaskScope scope) {
    loan->target = frontmost();
    current_ = loan;
    lend(*loan);
    const Instant ready = clock_.now() + beforeKeys;
    loan->field = co_await watch_.look(loan->target.processId, scope);
    if (clock_.now() < ready) {
        co_await sleep(clock_, ready - clock_.now(), scope);
    }
    const PasteKeys::Aim aimed([this, loan] { return aim(loan); },
                               [this, loan] { return isAskedFor(*loan); });
    loan->keys = co_await keys_.post(aimed, scope);
    if (loan->keys == KeysOutcome::unknown) {
        co_await lookAtField(loan, untilDoubted, scope);
    }
}

PasteRoute TextInsertion::aim(const std::shared_ptr<Loan>& loan) {
    const RunningApplication now = frontmost();
    if (current_ == loan && !(now == loan->target)) {
        loan->target = now;
        loan->field.reset();
        lend(*loan);
    }
    loan->posted = clock_.now();
    return pasteRouteFor(now);
}

bool TextInsertion::isAskedFor(const Loan& loan) const {
    const LoanState state = pasteboard_.loanState();
    return state.lastRequest && *state.lastRequest >= loan.posted;
}

PasteOutcome TextInsertion::outcomeOf(const Loan& loan) const {
    const bool isWithoutEffect = loan.keys == KeysOutcome::unknown && loan.sight == PasteSight::untouched;
    if (loan.keys != KeysOutcome::notPosted && !isWithoutEffect) {
        return {};
    }
    log_.diagLog(isWithoutEffect ? QStringLiteral("[tirra-paste] the keys had no effect")
                                 : QStringLiteral("[tirra-paste] the keys could not be posted"));
    return {PasteOutcome::Kind::failed, QStringLiteral("paste event failed")};
}

QCoro::Task<void> TextInsertion::lookAtField(std::shared_ptr<Loan> loan, Duration patience, TaskScope scope) {
    loan->sight = co_await watch_.follow(loan->field, loan->text.size(), patience, scope);
    if (loan->sight == PasteSight::standing) {
        logLanding(*loan, clock_.now(), QString());
    }
}

void TextInsertion::logLanding(const Loan& loan, Instant landed, const QString& remark) {
    if (loan.answered) {
        log_.diagLog(QStringLiteral("[tirra-landed] pasted %1 ms after the final line%2")
                         .arg(QString::number(milliseconds(landed - *loan.answered)), remark));
    }
}

void TextInsertion::typed() {
    if (const auto answered = std::exchange(answered_, std::nullopt)) {
        log_.diagLog(QStringLiteral("[tirra-landed] typed %1 ms after the final line")
                         .arg(milliseconds(clock_.now() - *answered)));
    }
}

void TextInsertion::handOver(const QString& text) {
    current_.reset();
    pasteboard_.setString(text);
}

RunningApplication TextInsertion::frontmost() const {
    return workspace_.frontmostApplication().value_or(RunningApplication());
}

void TextInsertion::lend(const Loan& loan) {
    PasteboardLoan terms;
    terms.text = loan.text;
    terms.target = loan.target.processId;
    terms.previous = loan.before;
    terms.primaryToo = keys_.readsPrimary(pasteRouteFor(loan.target));
    pasteboard_.lend(std::move(terms));
}

QCoro::Task<void> TextInsertion::giveBack(std::shared_ptr<Loan> loan, TaskScope scope) {
    const Instant due = clock_.now() + untilReturn;
    if (loan->keys == KeysOutcome::posted) {
        co_await lookAtField(loan, untilReturn, scope);
    }
    if (clock_.now() < due) {
        co_await sleep(clock_, due - clock_.now(), scope);
    }
    if (isOver(*loan)) {
        co_return;
    }
    co_await waitForQuiet(scope);
    const std::optional<QString> content = co_await pasteboard_.string(scope);
    if (isOver(*loan)) {
        co_return;
    }
    current_.reset();
    if (content != loan->text) {
        co_return; // somebody has copied something since
    }
    settle(*loan);
}

QCoro::Task<void> TextInsertion::waitForQuiet(TaskScope scope) {
    const Instant deadline = clock_.now() + longestNoise;
    for (;;) {
        const LoanState state = pasteboard_.loanState();
        if (state.lost || !state.lastRequest) {
            co_return;
        }
        const Instant calm = std::min(*state.lastRequest + quiet, deadline);
        if (clock_.now() >= calm) {
            co_return;
        }
        co_await sleep(clock_, calm - clock_.now(), scope);
    }
}

/// True when the text was handed over, or when another paste has borrowed the clipboard since. That one then
/// gives back what this one would have, if it has the same text, since its own snapshot holds no more than
/// that text.
bool TextInsertion::isOver(const Loan& loan) {
    if (current_.get() == &loan) {
        return false;
    }
    if (current_ && current_->text == loan.text) {
        current_->before = loan.before;
    }
    return true;
}

void TextInsertion::settle(const Loan& loan) {
    const LoanState state = pasteboard_.loanState();
    const bool isAsked = isAskedFor(loan);
    const bool isStanding = loan.sight == PasteSight::standing;
    if (isAsked) {
        log_.diagLog(QStringLiteral("[tirra-paste] %1 took the text, asking last %2 ms after the keys")
                         .arg(loan.target.localizedName,
                              QString::number(milliseconds(*state.lastRequest - loan.posted))));
    }
    if (isAsked && !isStanding) {
        logLanding(loan, *state.lastRequest, QStringLiteral(" (asked for, not read back)"));
    }
    // Somebody has asked, but if nobody knows that the keys went out it may not have been the application.
    const bool isTaken = isStanding || (isAsked && loan.keys != KeysOutcome::unknown);
    if (isTaken || state.lost) { // a copy of the same text counts as our own
        pasteboard_.restore(loan.before);
    } else {
        leave(loan);
    }
}

/// A hung application would paste whatever is there when it wakes.
void TextInsertion::leave(const Loan& loan) {
    const QString reason = loan.keys == KeysOutcome::unknown
                               ? QStringLiteral("[tirra-paste] %1 may not have had the keys")
                               : QStringLiteral("[tirra-paste] %1 did not ask for the text");
    log_.diagLog(reason.arg(loan.target.localizedName) + QStringLiteral(": it stays on the clipboard"));
    pasteboard_.setString(loan.text);
    if (onUnanswered) {
        onUnanswered();
    }
}

} // namespace lorvane
