// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/X11Pasteboard.h"

#include "platform/linux/clipboard/ContentTypes.h"

#include <vector>

namespace lorvane {

namespace {

constexpr qsizetype mostBytes = 64 * 1024 * 1024;
/// A selected text; an application that has a bigger one is not worth waiting for.
constexpr qsizetype mostPrimaryBytes = 4 * 1024 * 1024;
/// The middle mouse button is read beside the clipboard and mostly not needed.
constexpr Duration primaryPatience = seconds(0.1);
constexpr Duration handOverPatience = seconds(1);

const QString clipboardName = QStringLiteral("CLIPBOARD");
const QString primaryName = QStringLiteral("PRIMARY");

} // namespace

std::unique_ptr<X11Pasteboard> X11Pasteboard::open(Clock& clock) {
    auto connection = XcbConnection::open();
    if (!connection) {
        return nullptr;
    }
    return std::unique_ptr<X11Pasteboard>(new X11Pasteboard(std::move(connection), clock));
}

X11Pasteboard::X11Pasteboard(std::unique_ptr<XcbConnection> connection, Clock& clock)
    : connection_(std::move(connection)), clock_(clock), sender_(*connection_, clock), windows_(*connection_),
      clipboard_(*connection_, sender_, clock, clipboardName),
      primary_(*connection_, sender_, clock, primaryName),
      clipboardReader_(*connection_, windows_, clock, clipboardName),
      primaryReader_(*connection_, windows_, clock, primaryName) {}

X11Pasteboard::~X11Pasteboard() {
    primaryRead_ = TaskHandle();
    loans_.end();
    handOver();
}

QCoro::Task<PasteboardSnapshot> X11Pasteboard::snapshot(TaskScope scope) {
    rememberPrimary();
    SelectionRead read;
    if (clipboard_.isOwned()) {
        read.content = clipboard_.offer().own();
    } else {
        read = co_await clipboardReader_.readAll(mostBytes, scope);
    }
    if (primaryRead_.isRunning()) {
        const Completion<bool> done;
        const Handle bound = clock_.after(primaryPatience, [done] { done.complete(false); });
        primaryDone_ = done;
        co_await done.wait(scope);
    }
    co_return loans_.remember(read.content, read.readable);
}

void X11Pasteboard::rememberPrimary() {
    loans_.primaryBefore.reset();
    if (primary_.isOwned()) {
        loans_.primaryBefore = primary_.offer().own();
        return;
    }
    if (connection_->ownerOf(primary_.selection()) == XCB_WINDOW_NONE) {
        loans_.primaryBefore =
            ClipboardContent(); // known at once, however late a busy machine lets us hear it
        return;
    }
    primaryRead_ = startTask([this](TaskScope scope) { return readPrimary(std::move(scope)); });
}

QCoro::Task<void> X11Pasteboard::readPrimary(TaskScope scope) {
    const SelectionRead read = co_await primaryReader_.readAll(mostPrimaryBytes, scope);
    if (read.readable) {
        loans_.primaryBefore = read.content;
    }
    const auto done = primaryDone_;
    done.complete(true);
}

QCoro::Task<std::optional<QString>> X11Pasteboard::string(TaskScope scope) {
    if (clipboard_.isOwned()) {
        co_return clipboard_.offer().own().text();
    }
    const auto change = clipboard_.changeCount();
    std::optional<QString> text = co_await clipboardReader_.readText(mostBytes, scope);
    clipboard_.markRead(change);
    co_return text;
}

void X11Pasteboard::lend(PasteboardLoan loan) {
    primaryRead_ = TaskHandle();
    loans_.lend(std::move(loan), false);
}

void X11Pasteboard::lendToAll(PasteboardLoan loan) {
    primaryRead_ = TaskHandle();
    loan.target = 0;
    loans_.lend(std::move(loan), true);
}

void X11Pasteboard::handOver() {
    const auto manager = connection_->atom(QStringLiteral("CLIPBOARD_MANAGER"));
    if (!clipboard_.isOwned() || connection_->ownerOf(manager) == XCB_WINDOW_NONE) {
        return;
    }
    std::vector<xcb_atom_t> types;
    for (const auto& entry : clipboard_.offer().own().types) {
        types.push_back(connection_->atom(entry.type));
    }
    // The manager asks for these types, and answers when it has them (freedesktop.org's rules for clipboard
    // managers).
    ReadingWindow window(windows_);
    const auto property = connection_->atom(QStringLiteral("LORVANE_SAVE"));
    bool answered = false;
    const Handle events = connection_->handle(window.id(), [&](const xcb_generic_event_t& event) {
        answered = answered || (event.response_type & 0x7f) == XCB_SELECTION_NOTIFY;
    });
    xcb_change_property(connection_->raw(), XCB_PROP_MODE_REPLACE, window.id(), property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(types.size()), types.data());
    xcb_convert_selection(connection_->raw(), window.id(), manager,
                          connection_->atom(QStringLiteral("SAVE_TARGETS")), property, XCB_CURRENT_TIME);
    connection_->flush();
    connection_->runUntil([&] { return answered; }, clock_, handOverPatience);
}

} // namespace lorvane
