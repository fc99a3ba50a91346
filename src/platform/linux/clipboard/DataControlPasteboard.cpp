// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/DataControlPasteboard.h"

namespace lorvane {

namespace {

constexpr qsizetype mostBytes = 64 * 1024 * 1024;
constexpr qsizetype mostPrimaryBytes = 4 * 1024 * 1024;
constexpr Duration patience = std::chrono::seconds(3);
/// The selection of the middle mouse button is mostly not needed.
constexpr Duration primaryPatience = std::chrono::milliseconds(100);

} // namespace

std::unique_ptr<DataControlPasteboard> DataControlPasteboard::open(WaylandConnection& connection,
                                                                   const WaylandSeat& seat, Clock& clock) {
    auto device = DataControlDevice::open(connection, seat.seat());
    if (!device) {
        return nullptr;
    }
    return std::unique_ptr<DataControlPasteboard>(
        new DataControlPasteboard(connection, std::move(device), clock));
}

DataControlPasteboard::DataControlPasteboard(WaylandConnection& connection,
                                             std::unique_ptr<DataControlDevice> device, Clock& clock)
    : device_(std::move(device)), writers_(clock),
      clipboard_(connection, *device_, writers_, clock, WaylandSelection::clipboard),
      primary_(connection, *device_, writers_, clock, WaylandSelection::primary) {}

DataControlPasteboard::~DataControlPasteboard() = default;

QCoro::Task<PasteboardSnapshot> DataControlPasteboard::snapshot(TaskScope scope) {
    const auto read = co_await clipboard_.readAll(mostBytes, patience, scope);
    co_await rememberPrimary(scope);
    form_ = formOf(read.content);
    PasteboardSnapshot result = snapshotOf(read.content);
    result.readable = read.readable;
    co_return result;
}

QCoro::Task<void> DataControlPasteboard::rememberPrimary(TaskScope scope) {
    primaryBefore_.reset();
    if (!device_->hasPrimary()) {
        co_return;
    }
    const auto read = co_await primary_.readAll(mostPrimaryBytes, primaryPatience, scope);
    if (read.readable) {
        primaryBefore_ = read.content;
    }
}

QCoro::Task<std::optional<QString>> DataControlPasteboard::string(TaskScope scope) {
    return clipboard_.readText(mostBytes, std::move(scope));
}

void DataControlPasteboard::setString(const QString& text) {
    if (isPrimaryLent_ && primary_.offer().own().text() == text) {
        primary_.replace(ClipboardOffer(contentOfText(text)));
        isPrimaryLent_ = false;
    }
    returnPrimary();
    clipboard_.take(ClipboardOffer(contentOfText(text)));
}

void DataControlPasteboard::lend(PasteboardLoan loan) {
    const auto text = contentOfBorrowedText(loan.text);
    std::optional<ClipboardContent> previous;
    if (loan.previous.readable) {
        previous = contentOfSnapshot(loan.previous, form_);
    }
    clipboard_.take(ClipboardOffer::lent(text, loan.target, std::move(previous)));
    if (loan.primaryToo && device_->hasPrimary()) {
        primary_.take(ClipboardOffer::lent(text, loan.target, primaryBefore_));
        isPrimaryLent_ = true;
    } else {
        returnPrimary();
    }
}

void DataControlPasteboard::keysGoOut() {
    clipboard_.keysGoOut();
    primary_.keysGoOut();
}

LoanState DataControlPasteboard::loanState() const {
    LoanState state{clipboard_.lastRequest(), clipboard_.isLost()};
    if (isPrimaryLent_ && primary_.lastRequest() > state.lastRequest) {
        state.lastRequest = primary_.lastRequest();
    }
    return state;
}

void DataControlPasteboard::restore(const PasteboardSnapshot& snapshot) {
    returnPrimary();
    if (!snapshot.readable) {
        if (clipboard_.isOwned()) {
            clipboard_.replace(ClipboardOffer(clipboard_.offer().own()));
        }
    } else if (snapshot.items.isEmpty()) {
        clipboard_.release();
    } else {
        const auto* previous = clipboard_.offer().previous();
        clipboard_.replace(ClipboardOffer(contentOfSnapshot(snapshot, previous ? *previous : form_)));
    }
}

void DataControlPasteboard::returnPrimary() {
    if (!isPrimaryLent_) {
        return;
    }
    isPrimaryLent_ = false;
    const auto* previous = primary_.offer().previous();
    if (!primary_.isOwned() || previous == nullptr) {
        return;
    }
    if (previous->isEmpty()) {
        primary_.release();
    } else {
        primary_.replace(ClipboardOffer(*previous));
    }
}

} // namespace lorvane
