// SPDX-License-Identifier: GPL-3.0-or-later
// Lists the windows of this display, waits for one, activates or closes one.
#include "support/Wait.h"
#include "support/Windows.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>

using lorvane::WindowInfo;
namespace windows = lorvane::windows;

namespace {

constexpr int misuse = 2;

void print(const WindowInfo& window) {
    std::printf("0x%x\t%lld\t%s\t%s\n", window.id, static_cast<long long>(window.pid),
                qPrintable(window.windowClass), qPrintable(window.title));
}

struct Wanted {
    qint64 pid;
    QString windowClass;
    QString title;

    bool matches(const WindowInfo& window) const {
        return (pid == 0 || window.pid == pid) &&
               (windowClass.isEmpty() || window.windowClass.compare(windowClass, Qt::CaseInsensitive) == 0) &&
               (title.isEmpty() || window.title.contains(title));
    }
};

int wait(const Wanted& wanted, double seconds) {
    const auto isThere = [&wanted] {
        for (const auto& window : windows::all()) {
            if (wanted.matches(window)) {
                print(window);
                return true;
            }
        }
        return false;
    };
    if (lorvane::waitUntil(isThere, std::chrono::milliseconds(static_cast<qint64>(seconds * 1000))))
        return 0;
    std::fputs("lorvane-window: no such window\n", stderr);
    return 1;
}

int run(QCommandLineParser& parser) {
    const QStringList words = parser.positionalArguments();
    const QString verb = words.value(0);
    if (verb == QStringLiteral("list")) {
        for (const auto& window : windows::all())
            print(window);
    } else if (verb == QStringLiteral("active")) {
        print(windows::active());
    } else if (verb == QStringLiteral("wait")) {
        return wait({parser.value(QStringLiteral("pid")).toLongLong(), parser.value(QStringLiteral("class")),
                     parser.value(QStringLiteral("title"))},
                    parser.value(QStringLiteral("seconds")).toDouble());
    } else if (verb == QStringLiteral("activate") && words.size() == 2) {
        windows::activate(words[1].toUInt(nullptr, 0));
    } else if (verb == QStringLiteral("close") && words.size() == 2) {
        windows::close(words[1].toUInt(nullptr, 0));
    } else {
        std::fputs(qPrintable(parser.helpText()), stderr);
        return misuse;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("list; active; wait; activate ID; close ID\n"
                                                    "A line is: id, process, class, title."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("verb"),
                                 QStringLiteral("list, active, wait, activate or close"));
    const QString text = QStringLiteral("text");
    parser.addOption(
        {QStringLiteral("pid"), QStringLiteral("wait: of this process"), text, QStringLiteral("0")});
    parser.addOption({QStringLiteral("class"), QStringLiteral("wait: of this class"), text});
    parser.addOption({QStringLiteral("title"), QStringLiteral("wait: with this in its title"), text});
    parser.addOption(
        {QStringLiteral("seconds"), QStringLiteral("wait: at most"), text, QStringLiteral("20")});
    parser.process(application);
    try {
        return run(parser);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lorvane-window: %s\n", error.what());
        return 1;
    }
}
