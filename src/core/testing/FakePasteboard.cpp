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
    const Duration wait = ownerHangs ? patience : delay;
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
    const Duration wait = ownerHangs ? patience : delay;
    if (wait > Duration::zero()) {
        co_await sleep(clock_, wait, scope);
    }
    std::optional<QString> result;
    if (loan_) {
        result = loan_->text;
    } else if (!ownerHangs) {
        result = textOf(content_);
        isRead_ = !isOwn_;
    }
    co_return result;
}

void FakePasteboard::setString(const QString& text) {
    ++writes;
    own(snapshotOfText(text));
}

void FakePasteboard::lend(PasteboardLoan loan) {
    ++writes;
    loans.push_back(loan);
    own(loan.previous);
    loan_ = std::move(loan);
}

LoanState FakePasteboard::loanState() const { return {lastRequest_, isLost_}; }

void FakePasteboard::restore(const PasteboardSnapshot& snapshot) {
    ++writes;
    if (!isOwn_ && (!isRead_ || !snapshot.readable)) {
        return;
    }
    if (snapshot.readable) {
        own(snapshot);
        isOwn_ = !snapshot.items.isEmpty();
    } else if (loan_) {
        own(snapshotOfText(loan_->text));
    }
}

void FakePasteboard::own(PasteboardSnapshot content) {
    content_ = std::move(content);
    loan_.reset();
    lastRequest_.reset();
    ownerHangs = false;
    isOwn_ = true;
    isLost_ = isRead_ = false;
}

void FakePasteboard::copyElsewhere(const PasteboardSnapshot& content) {
    content_ = content;
    loan_.reset();
    ownerHangs = false;
    isLost_ = isLost_ || isOwn_;
    isOwn_ = isRead_ = false;
}

std::optional<QString> FakePasteboard::pasteInto(ProcessId process) {
    if (!loan_) {
        return ownerHangs ? std::nullopt : textOf(content_);
    }
    const bool isTarget = loan_->target == process || loan_->target == 0;
    if (isTarget) {
        lastRequest_ = clock_.now();
    }
    return isTarget || !loan_->previous.readable ? std::optional(loan_->text) : textOf(loan_->previous);
}

PasteboardSnapshot FakePasteboard::snapshotOfText(const QString& text) {
    PasteboardSnapshot content;
    content.items.append(QMap<QString, QByteArray>{{textType, text.toUtf8()}});
    return content;
}

std::optional<QString> FakePasteboard::text() const { return textOf(content_); }

} // namespace lorvane
