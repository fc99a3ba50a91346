// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DesktopApps.h"

#include "support/PhysicalKeyboard.h"
#include "support/ProcessTree.h"
#include "support/SessionHands.h"
#include "support/Windows.h"

#include <csignal>
#include <stdexcept>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

namespace lorvane {

namespace {

const QString fieldTool = QStringLiteral(LORVANE_FIELD_TOOL);

[[noreturn]] void fail(const QString& what) {
    QString seen = what + QStringLiteral("; windows:");
    for (const auto& window : windows::all())
        seen += QStringLiteral(" [%1 %2 '%3']").arg(window.pid).arg(window.windowClass, window.title);
    throw std::runtime_error(seen.toStdString());
}

std::optional<QJsonObject> showField(qint64 pid, const QStringList& more) {
    const QStringList show{QStringLiteral("show"), QStringLiteral("--pid"), QString::number(pid)};
    const auto result = runTool(fieldTool, show + more);
    if (result.status != 0)
        return std::nullopt;
    return QJsonDocument::fromJson(result.output).object();
}

} // namespace

DesktopApp::~DesktopApp() { kill(); }

void DesktopApp::kill() {
    processes::end(processes::family(process_.processId()));
    process_.waitForFinished();
}

QString DesktopApp::writeFile(const QString& name, const QByteArray& content) {
    QString path = folder_.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0)
        fail(QStringLiteral("cannot write ") + path);
    return path;
}

void DesktopApp::start(const QString& program, const QStringList& arguments) {
    if (hands::areThere()) {
        for (const char* toolkit : {"QT_QPA_PLATFORM", "GDK_BACKEND"})
            setEnvironment(QLatin1String(toolkit), QStringLiteral("wayland"));
        setEnvironment(QStringLiteral("MOZ_ENABLE_WAYLAND"), QStringLiteral("1"));
    }
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(program, arguments);
    if (!process_.waitForStarted())
        fail(program + QStringLiteral(" does not start: ") + process_.errorString());
}

bool DesktopApp::ownsActiveWindow() {
    const auto active = windows::active();
    const auto family = processes::family(process_.processId());
    const bool owns = active.pid != 0 && family.contains(active.pid);
    if (!owns && hands::areThere())
        bringForward(family);
    pid_ = owns ? active.pid : 0;
    window_ = owns ? active.id : 0;
    return owns;
}

// A Wayland compositor may leave a new window behind until the user goes there.
void DesktopApp::bringForward(const QList<qint64>& family) {
    for (const auto& window : windows::all()) {
        if (family.contains(window.pid))
            return windows::activate(window.id);
    }
}

bool DesktopApp::hasKeyboard() const {
    if (page_)
        return page_->hasFocus();
    return received_.isEmpty() ? field().has_value() : QFile::exists(received_);
}

void DesktopApp::waitForWindow() {
    constexpr std::chrono::seconds slowStart{60}; // an office suite that makes its first profile
    const bool ready = waitUntil(
        [&] { return process_.state() == QProcess::NotRunning || (ownsActiveWindow() && hasKeyboard()); },
        slowStart);
    if (!ready || process_.state() == QProcess::NotRunning)
        fail(process_.program() + QStringLiteral(" did not get the focus: ") +
             QString::fromUtf8(process_.readAll()));
}

// A large program goes on starting for a while after its window is there, and answers slowly meanwhile.
void DesktopApp::waitUntilQuiet() const {
    constexpr std::chrono::milliseconds look{200};
    constexpr double quiet = 0.1; // of one processor
    const auto used = [this] {
        double sum = 0;
        for (const qint64 one : processes::family(process_.processId()))
            sum += processes::processorSeconds(one);
        return sum;
    };
    double before = used();
    (void)waitUntil([&] {
        (void)waitUntil([] { return false; }, look);
        const double now = used();
        const bool isQuiet = now - before < quiet * std::chrono::duration<double>(look).count();
        before = now;
        return isQuiet;
    });
}

// Being the active window is no proof: a program may drop keys for a moment after that. So a key is tapped
// until one arrives.
void DesktopApp::proveKeyboard(int key, const std::function<bool()>& arrived) const {
    PhysicalKeyboard keyboard;
    const bool takesKeys = waitUntil([&] {
        keyboard.tap(key);
        return waitUntil(arrived, std::chrono::seconds(1));
    });
    if (!takesKeys)
        fail(process_.program() + QStringLiteral(" takes no keys; it holds: ") + text());
}

std::optional<QJsonObject> DesktopApp::field() const { return showField(pid_, {}); }

QString DesktopApp::text() const {
    if (holds_)
        return holds_();
    return readText(QStringLiteral("--resting"));
}

QString DesktopApp::readText(const QString& how) const {
    const auto reading = showField(pid_, {how});
    if (!reading)
        fail(process_.program() + QStringLiteral(" shows no text"));
    return reading->value(QStringLiteral("text")).toString();
}

QString DesktopApp::waitForText(const QString& wanted, std::chrono::milliseconds bound) const {
    return waitForText([&](const QString& text) { return text == wanted; }, bound);
}

QString DesktopApp::waitForText(const std::function<bool(const QString&)>& isWanted,
                                std::chrono::milliseconds bound) const {
    QString seen;
    (void)waitUntil([&] { return isWanted(seen = text()); }, bound);
    return seen;
}

bool DesktopApp::select(int first, int last) const {
    return runTool(fieldTool, {QStringLiteral("select"), QString::number(first), QString::number(last),
                               QStringLiteral("--pid"), QString::number(pid_)})
               .status == 0;
}

void DesktopApp::focus() {
    windows::activate(window_);
    if (!waitUntil([&] { return windows::active().id == window_ && hasKeyboard(); }))
        fail(process_.program() + QStringLiteral(" cannot be made active"));
}

void DesktopApp::empty() {
    if (!received_.isEmpty()) {
        if (!QFile::resize(received_, 0))
            fail(QStringLiteral("cannot empty ") + received_);
        return;
    }
    PhysicalKeyboard keyboard;
    const bool gone = waitUntil([&] {
        // By keys that every layout has in one place.
        keyboard.command({keycode::leftControl, keycode::end});
        keyboard.command({keycode::leftControl, keycode::leftShift, keycode::home});
        keyboard.tap(keycode::deleteForward);
        return waitForText(QString(), std::chrono::seconds(1)).isEmpty();
    });
    if (!gone)
        fail(process_.program() + QStringLiteral(" cannot be emptied; it holds: ") + text());
    if (page_)
        page_->tidy();
}

void DesktopApp::hang() { ::kill(static_cast<pid_t>(pid_), SIGSTOP); }

void DesktopApp::wake() { ::kill(static_cast<pid_t>(pid_), SIGCONT); }

} // namespace lorvane
