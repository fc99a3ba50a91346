// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DesktopApps.h"

#include "support/PhysicalKeyboard.h"
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

QString readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

std::optional<QJsonObject> showField(qint64 pid, const QStringList& more) {
    const QStringList show{QStringLiteral("show"), QStringLiteral("--pid"), QString::number(pid)};
    const auto result = runTool(fieldTool, show + more);
    if (result.status != 0)
        return std::nullopt;
    return QJsonDocument::fromJson(result.output).object();
}

} // namespace

std::unique_ptr<DesktopApp> DesktopApp::mousepad(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->start(QStringLiteral("mousepad"), {QStringLiteral("--disable-server"), app->writeFile(text)});
    app->waitForWindow();
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::featherpad(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->start(QStringLiteral("featherpad"), {QStringLiteral("--standalone"), app->writeFile(text)});
    app->waitForWindow();
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::xterm() {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->received_ = app->folder_.filePath(QStringLiteral("received"));
    // The file appears when the terminal is set up to hand every byte on at once.
    const auto keep = QStringLiteral("stty raw -echo && exec cat >>'%1'").arg(app->received_);
    app->start(QStringLiteral("xterm"),
               {QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"), keep});
    if (!waitUntil([&] { return QFile::exists(app->received_); }))
        fail(QStringLiteral("xterm did not start its program"));
    app->waitForWindow();
    app->proveKeyboard();
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::command(const QString& program, const QStringList& arguments) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->start(program, arguments);
    app->waitForWindow();
    return app;
}

DesktopApp::~DesktopApp() {
    process_.kill();
    process_.waitForFinished();
}

QString DesktopApp::writeFile(const QString& text) {
    QString path = folder_.filePath(QStringLiteral("text.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        fail(QStringLiteral("cannot write ") + path);
    return path;
}

void DesktopApp::start(const QString& program, const QStringList& arguments) {
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(program, arguments);
    if (!process_.waitForStarted())
        fail(program + QStringLiteral(" does not start: ") + process_.errorString());
}

void DesktopApp::waitForWindow() {
    const bool readable = received_.isEmpty();
    const bool ready = waitUntil([&] {
        const auto active = windows::active();
        window_ = active.pid == pid() ? active.id : 0;
        return process_.state() == QProcess::NotRunning || (window_ != 0 && (!readable || field()));
    });
    if (!ready || process_.state() == QProcess::NotRunning)
        fail(process_.program() + QStringLiteral(" did not get the focus: ") +
             QString::fromUtf8(process_.readAll()));
}

// Being the active window is no proof: a terminal may drop keys for a moment after that. So a key is tapped
// until one arrives. The last key is another one: keys keep their order, so once it is there none is on its
// way any more, and what came can be forgotten (the program appends, so it goes on at the start).
void DesktopApp::proveKeyboard() {
    PhysicalKeyboard keyboard;
    const auto isThere = [](const QString& text) { return !text.isEmpty(); };
    const bool takesKeys = waitUntil([&] {
        keyboard.tap(keycode::letterA);
        return !waitForText(isThere, std::chrono::seconds(1)).isEmpty();
    });
    keyboard.tap(keycode::letterQ);
    const auto isOver = [](const QString& text) { return text.endsWith(QChar(u'q')); };
    if (!takesKeys || !isOver(waitForText(isOver)))
        fail(process_.program() + QStringLiteral(" takes no keys; it has received: ") + text());
    if (!QFile::resize(received_, 0))
        fail(QStringLiteral("cannot empty ") + received_);
}

std::optional<QJsonObject> DesktopApp::field() const { return showField(pid(), {}); }

QString DesktopApp::text() const {
    if (!received_.isEmpty())
        return readFile(received_);
    const auto reading = showField(pid(), {QStringLiteral("--resting")});
    if (!reading)
        fail(process_.program() + QStringLiteral(" shows no field"));
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
                               QStringLiteral("--pid"), QString::number(pid())})
               .status == 0;
}

void DesktopApp::focus() {
    windows::activate(window_);
    if (!waitUntil([&] { return windows::active().id == window_ && (!received_.isEmpty() || field()); }))
        fail(process_.program() + QStringLiteral(" cannot be made active"));
}

void DesktopApp::hang() { ::kill(static_cast<pid_t>(pid()), SIGSTOP); }

void DesktopApp::wake() { ::kill(static_cast<pid_t>(pid()), SIGCONT); }

} // namespace lorvane
