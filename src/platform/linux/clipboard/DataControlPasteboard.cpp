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
                                                                   WaylandSeat& seat, Clock& clock) {
    auto device = DataControlDevice::open(connection, seat);
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
    co_return loans_.remember(read.content, read.readable);
}

QCoro::Task<void> DataControlPasteboard::rememberPrimary(TaskScope scope) {
    loans_.primaryBefore.reset();
    if (!device_->hasPrimary()) {
        co_return;
    }
    const auto read = co_await primary_.readAll(mostPrimaryBytes, primaryPatience, scope);
    if (read.readable) {
        loans_.primaryBefore = read.content;
    }
}

QCoro::Task<std::optional<QString>> DataControlPasteboard::string(TaskScope scope) {
    return clipboard_.readText(mostBytes, std::move(scope));
}

void DataControlPasteboard::lend(PasteboardLoan loan) {
    loan.primaryToo = loan.primaryToo && device_->hasPrimary();
    loans_.lend(std::move(loan), true);
}

} // namespace lorvane
