// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"

#include <QApplication>

#include <csignal>
#include <cstdlib>

#include <xcb/xcb.h>

namespace lorvane {

namespace {

// Qt ends the process by abort() when it finds no display, so it is only asked when there is one.
bool displayAnswers() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

void prepareEnvironment() {
    qputenv("QT_QPA_PLATFORM", "xcb");
    // Without it the windows are told to nobody until a screen reader has been seen.
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    // The themes of the desktops load a second toolkit for the sake of dialogues that are never opened here.
    qputenv("QT_QPA_PLATFORMTHEME", "generic");
}

void (*sayAtExit)() = nullptr;

void onExit() {
    if (sayAtExit != nullptr) {
        sayAtExit();
    }
}

} // namespace

std::unique_ptr<QCoreApplication> makeProgramApplication(int& argc, char** argv) {
    if (!displayAnswers()) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    // A display that goes away is an error of the next request, which must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    prepareEnvironment();
    QApplication::setStyle(QStringLiteral("Fusion"));
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QStringLiteral("com.ostrand.tirra"));
    return application;
}

UnexpectedExit::UnexpectedExit(void (*say)()) {
    static const int registered = std::atexit(onExit);
    Q_UNUSED(registered)
    sayAtExit = say;
}

UnexpectedExit::~UnexpectedExit() { sayAtExit = nullptr; }

} // namespace lorvane
