// SPDX-License-Identifier: GPL-3.0-or-later
// A clipboard manager of the freedesktop.org kind, which keeps what a program asks it to keep before it ends.
// Says "ready" when it is the manager, and "kept " with the text when it has kept one.
#include "platform/linux/clipboard/SelectionReader.h"
#include "platform/linux/desktop/QtClock.h"

#include <QCoreApplication>

#include <cstdio>

using namespace lorvane;

namespace {

void say(const QByteArray& words) {
    std::puts(words.constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QtClock clock;
    const auto connection = XcbConnection::open();
    if (!connection) {
        return 2;
    }
    ReadingWindows windows(*connection);
    SelectionReader reader(*connection, windows, clock, QStringLiteral("CLIPBOARD"));
    TaskGroup tasks;
    const auto window = connection->makeWindow();
    const auto events = connection->handle(window, [&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7f) != XCB_SELECTION_REQUEST) {
            return;
        }
        const auto request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
        tasks.start([&, request](TaskScope scope) -> QCoro::Task<void> {
            const SelectionRead read = co_await reader.readAll(1 << 30, scope);
            say("kept " + read.content.text().value_or(QString()).toUtf8());
            xcb_selection_notify_event_t answer{};
            answer.response_type = XCB_SELECTION_NOTIFY;
            answer.requestor = request.requestor;
            answer.selection = request.selection;
            answer.target = request.target;
            answer.property = request.property;
            xcb_send_event(connection->raw(), 0, request.requestor, 0,
                           reinterpret_cast<const char*>(&answer));
            connection->flush();
        });
    });
    xcb_set_selection_owner(connection->raw(), window, connection->atom(QStringLiteral("CLIPBOARD_MANAGER")),
                            XCB_CURRENT_TIME);
    connection->flush();
    say("ready");
    return QCoreApplication::exec();
}
