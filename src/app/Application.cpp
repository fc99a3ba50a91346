// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"

#include "app/session/SessionProbe.h"

#include <QApplication>

#include <csignal>
#include <cstdlib>

namespace lorvane {

namespace {

const char* nameOf(QtPlatform platform) {
    switch (platform) {
    case QtPlatform::wayland:
        return "wayland";
    case QtPlatform::offscreen:
        return "offscreen";
    case QtPlatform::xcb:
    case QtPlatform::none:
        break;
    }
    return "xcb";
}

void prepareEnvironment(QtPlatform platform) {
    qputenv("QT_QPA_PLATFORM", nameOf(platform));
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
    // Qt ends the process by abort() when it finds no display, so it is only asked when there is one.
    const QtPlatform platform = chooseSession(probeSession()).platform;
    if (platform == QtPlatform::none) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    // A display that goes away is an error of the next request, which must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    prepareEnvironment(platform);
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
