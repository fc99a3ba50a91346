// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/FakePasteboard.h"

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);

std::optional<QString> textOf(const PasteboardSnapshot& content) {
    for (const auto& item : content.items) {
        const auto found = item.find(FakePasteboard::textType);
        if (found != item.end()) {
            return QString::fromUtf8(found.value());
        }
    }
    return std::nullopt;
}

} // namespace

QCoro::Task<PasteboardSnapshot> FakePasteboard::snapshot(TaskScope scope) {
    const Duration wait = ownerAnswers() ? delay : patience;
    if (wait > Duration::zero()) {
        co_await sleep(clock_, wait, scope);
    }
    PasteboardSnapshot result;
    if (loan_) {
        result = snapshotOfText(loan_->text);
    } else if (ownerHangs) {
        result.readable = false;
    } else {
        result = content_;
    }
    co_return result;
}

QCoro::Task<std::optional<QString>> FakePasteboard::string(TaskScope scope) {
    const Duration wait = ownerAnswers() ? delay : patience;
    if (wait > Duration::zero()) {
        co_await sleep(clock_, wait, scope);
    }
    std::optional<QString> result;
    if (loan_) {
        result = loan_->text;
    } else if (!ownerHangs) {
        result = textOf(content_);
    }
    co_return result;
}

void FakePasteboard::setString(const QString& text) {
    ++writes;
    loan_.reset();
    ownerHangs = false;
    content_ = snapshotOfText(text);
}

void FakePasteboard::lend(PasteboardLoan loan) {
    ++writes;
    loans.push_back(loan);
    content_ = loan.previous;
    loan_ = std::move(loan);
    lastRequest_.reset();
}

LoanState FakePasteboard::loanState() const { return {lastRequest_, !loan_.has_value()}; }

void FakePasteboard::restore(const PasteboardSnapshot& snapshot) {
    ++writes;
    ownerHangs = false;
    if (snapshot.readable) {
        content_ = snapshot;
    } else if (loan_) {
        content_ = snapshotOfText(loan_->text);
    }
    loan_.reset();
}

void FakePasteboard::copyElsewhere(const PasteboardSnapshot& content) {
    loan_.reset();
    ownerHangs = false;
    content_ = content;
}

std::optional<QString> FakePasteboard::pasteInto(ProcessId process) {
    if (!loan_) {
        return ownerHangs ? std::nullopt : textOf(content_);
    }
    const bool isTarget = loan_->target == process;
    if (isTarget) {
        lastRequest_ = clock_.now();
    }
    const bool isServedText = isTarget || loan_->target == 0 || !loan_->previous.readable;
    return isServedText ? std::optional(loan_->text) : textOf(loan_->previous);
}

PasteboardSnapshot FakePasteboard::snapshotOfText(const QString& text) {
    PasteboardSnapshot content;
    content.items.append(QMap<QString, QByteArray>{{textType, text.toUtf8()}});
    return content;
}

std::optional<QString> FakePasteboard::text() const { return textOf(content_); }

} // namespace lorvane
