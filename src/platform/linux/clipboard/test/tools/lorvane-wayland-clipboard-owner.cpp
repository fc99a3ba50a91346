// SPDX-License-Identifier: GPL-3.0-or-later
// Another program that owns the clipboard of a compositor: TYPE=FILE for each type. Prints "ready" once the
// compositor has carried it out and "cancelled" when another program takes the clipboard. With --primary the
// other selection.
#include "platform/linux/clipboard/DataControlDevice.h"
#include "platform/linux/clipboard/PipeTransfer.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <QCoreApplication>
#include <QFile>
#include <QMap>

#include <csignal>
#include <cstdio>

using namespace lorvane;

namespace {

void say(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

QMap<QString, QByteArray> contentFrom(const QStringList& arguments) {
    QMap<QString, QByteArray> content;
    for (const QString& argument : arguments) {
        const qsizetype cut = argument.lastIndexOf(u'=');
        QFile file(argument.mid(cut + 1));
        if (cut > 0 && file.open(QIODevice::ReadOnly)) {
            content.insert(argument.left(cut), file.readAll());
        }
    }
    return content;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    QtClock clock;
    DiagnosticLog log(clock, std::nullopt);
    WaylandConnection connection(log);
    connection.awaitGlobals(clock, std::chrono::seconds(10));
    WaylandSeat seat(connection);
    const auto device = DataControlDevice::open(connection, seat);
    if (!device) {
        say("no data control");
        return 1;
    }
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool isPrimary = arguments.removeAll(QStringLiteral("--primary")) > 0;
    const auto content = contentFrom(arguments);
    PipeWriters writers(clock);
    DataControlDevice::Source source;
    source.types = content.keys();
    source.send = [&](const QString& type, FileDescriptor end) {
        writers.write(std::move(end), content.value(type));
    };
    source.cancelled = [] { say("cancelled"); };
    device->offer(isPrimary ? WaylandSelection::primary : WaylandSelection::clipboard, source);
    const Handle ready = connection.afterServer([] { say("ready"); });
    return QCoreApplication::exec();
}
