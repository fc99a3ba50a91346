// SPDX-License-Identifier: GPL-3.0-or-later
// What a user does in a session of the virtual desktop besides typing.
#include "support/UserSession.h"

#include <cstdio>
#include <exception>
#include <string_view>

#include <QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QProcess>

namespace session = lorvane::session;

namespace {

constexpr int misuse = 2;

int takePicture(const QString& path) {
    if (!session::isWayland())
        return QProcess::execute(QStringLiteral("import"),
                                 {QStringLiteral("-window"), QStringLiteral("root"), path});
    QFile::remove(path);
    return QFile::copy(session::takePicture(QStringLiteral("session")), path) ? 0 : 1;
}

int act(int count, char** words) {
    const std::string_view verb = count > 1 ? words[1] : "";
    if (verb == "set-up" && count == 2) {
        session::beSetUp();
        return 0;
    }
    if (verb == "picture" && count == 3)
        return takePicture(QString::fromLocal8Bit(words[2]));
    std::fputs("usage: lorvane-session set-up         what the program's user does once in such a session\n"
               "       lorvane-session picture FILE   of the whole screen\n",
               stderr);
    return misuse;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv); // what is waited for needs its events
    try {
        return act(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lorvane-session: %s\n", error.what());
        return 1;
    }
}
