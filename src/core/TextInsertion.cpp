// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TextInsertion.h"

#include <algorithm>

namespace lorvane {

namespace {

/// So that the target finds the new content when the keys arrive.
constexpr Duration beforeKeys = std::chrono::milliseconds(150);
constexpr Duration untilReturn = std::chrono::milliseconds(1600);
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
      workspace_(workspace) {}

QCoro::Task<PasteOutcome> TextInsertion::pasteText(QString text, TaskScope scope) {
    PasteOutcome outcome;
    const bool secure = co_await fields_.isSecureEventInputEnabled(scope);
    if (secure) {
        outcome.kind = PasteOutcome::Kind::secure;
        co_return outcome;
    }
    const auto loan = std::make_shared<Loan>();
    loan->text = text;
    loan->before = co_await pasteboard_.snapshot(scope);
    if (scope.isCancelled()) {
        throw TaskCancelled();
    }
    const TaskScope onward = scope.shielded();
    const bool posted = co_await postKeys(loan, onward);
    returns_.start([this, loan](TaskScope own) { return giveBack(loan, std::move(own)); });
    if (!posted) {
        outcome.kind = PasteOutcome::Kind::failed;
        outcome.reason = QStringLiteral("paste event failed");
        log_.diagLog(QStringLiteral("[tirra-paste] the keys could not be posted"));
    }
    co_return outcome;
}

QCoro::Task<bool> TextInsertion::postKeys(std::shared_ptr<Loan> loan, TaskScope scope) {
    loan->target = frontmost();
    current_ = loan;
    lend(*loan);
    co_await sleep(clock_, beforeKeys, scope);
    // The keys go to whoever is in front now, and it must find the text and not the old content.
    const RunningApplication now = frontmost();
    if (current_ == loan && !(now == loan->target)) {
        loan->target = now;
        lend(*loan);
    }
    loan->posted = clock_.now();
    const bool posted = co_await keys_.post(pasteRouteFor(loan->target), scope);
    co_return posted;
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
    terms.primaryToo = pasteRouteFor(loan.target) == PasteRoute::primaryTerminal;
    pasteboard_.lend(std::move(terms));
}

QCoro::Task<void> TextInsertion::giveBack(std::shared_ptr<Loan> loan, TaskScope scope) {
    co_await sleep(clock_, untilReturn, scope);
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
    if (state.lastRequest && *state.lastRequest >= loan.posted) {
        log_.diagLog(QStringLiteral("[tirra-paste] %1 took the text, asking last %2 ms after the keys")
                         .arg(loan.target.localizedName,
                              QString::number(milliseconds(*state.lastRequest - loan.posted))));
        pasteboard_.restore(loan.before);
    } else if (state.lost) {
        pasteboard_.restore(loan.before); // a copy of the same text counts as our own
    } else {
        // A hung application would paste whatever is there when it wakes.
        log_.diagLog(QStringLiteral("[tirra-paste] %1 did not ask for the text: it stays on the clipboard")
                         .arg(loan.target.localizedName));
        pasteboard_.setString(loan.text);
        if (onUnanswered) {
            onUnanswered();
        }
    }
}

} // namespace lorvane
