// SPDX-License-Identifier: GPL-3.0-or-later
// How each of the applications is started, and where it keeps its text.
#include "support/DesktopApps.h"

#include "support/PhysicalKeyboard.h"
#include "support/SessionHands.h"

#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <stdexcept>

namespace lorvane {

namespace {

QString readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// A document in one file; a plain text would make the word processor ask for its format.
QByteArray openDocument(const QString& text) {
    QString paragraphs;
    for (const auto& line : text.split(QChar(u'\n')))
        paragraphs += QStringLiteral("<text:p>%1</text:p>").arg(line.toHtmlEscaped());
    return QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
  xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" office:version="1.3"
  office:mimetype="application/vnd.oasis.opendocument.text">
<office:body><office:text>%1</office:text></office:body>
</office:document>
)")
        .arg(paragraphs)
        .toUtf8();
}

// No first start, no questions, nothing of accessibility left out.
const QByteArray firefoxPreferences = R"(
user_pref("accessibility.force_disabled", -1);
user_pref("app.normandy.enabled", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.sessionstore.resume_from_crash", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("toolkit.telemetry.reportingpolicy.firstRun", false);
user_pref("trailhead.firstrun.didSeeAboutWelcome", true);
)";

} // namespace

void DesktopApp::setEnvironment(const QString& name, const QString& value) {
    auto environment = process_.processEnvironment();
    if (environment.isEmpty())
        environment = QProcessEnvironment::systemEnvironment();
    environment.insert(name, value);
    process_.setProcessEnvironment(environment);
}

void DesktopApp::startEditor(const QString& program, const QStringList& arguments, const QString& text) {
    start(program, arguments + QStringList{writeFile(QStringLiteral("text.txt"), text.toUtf8())});
    waitForWindow();
}

std::unique_ptr<DesktopApp> DesktopApp::mousepad(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->startEditor(QStringLiteral("mousepad"), {QStringLiteral("--disable-server")}, text);
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::gnomeTextEditor(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    // By default GTK 4 draws with OpenGL, which takes ten times as long without a graphics processor.
    app->setEnvironment(QStringLiteral("GSK_RENDERER"), QStringLiteral("cairo"));
    app->startEditor(QStringLiteral("gnome-text-editor"), {QStringLiteral("--standalone")}, text);
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::featherpad(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->startEditor(QStringLiteral("featherpad"), {QStringLiteral("--standalone")}, text);
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::writer(const QString& text) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->setEnvironment(QStringLiteral("SAL_USE_VCLPLUGIN"), QStringLiteral("gtk3"));
    app->holds_ = [app = app.get()] { return app->readText(QStringLiteral("--document")); };
    const auto profile = QUrl::fromLocalFile(app->folder_.filePath(QStringLiteral("profile")));
    app->start(QStringLiteral("soffice"),
               {QStringLiteral("--writer"), QStringLiteral("--norestore"), QStringLiteral("--nologo"),
                QStringLiteral("-env:UserInstallation=") + profile.toString(),
                app->writeFile(QStringLiteral("text.fodt"), openDocument(text))});
    app->waitForWindow();
    app->proveKeyboard(keycode::letterQ, [&] { return app->text() != text; });
    PhysicalKeyboard keyboard;
    if (!waitUntil([&] {
            keyboard.command({keycode::leftAlt, keycode::backspace}); // undoes, whatever the layout
            return app->waitForText(text, std::chrono::seconds(1)) == text;
        }))
        throw std::runtime_error("what was typed for a trial stays: " + app->text().toStdString());
    keyboard.command({keycode::leftControl, keycode::end});
    app->waitUntilQuiet();
    return app;
}

void DesktopApp::startBrowser(const QString& program, const QStringList& arguments, const QString& text,
                              WebPage::Kind kind) {
    page_ = std::make_unique<WebPage>(text, kind);
    holds_ = [this] { return page_->text(); };
    start(program, arguments + QStringList{page_->url().toString()});
    waitForWindow();
    proveKeyboard(keycode::leftShift, [this] { return page_->keys() > 0; });
    waitUntilQuiet();
}

std::unique_ptr<DesktopApp> DesktopApp::chromium(const QString& text, WebPage::Kind kind) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    const auto platform = hands::areThere() ? QStringLiteral("wayland") : QStringLiteral("x11");
    // Without its sandbox it runs for root as well, and without /dev/shm in a small container.
    app->startBrowser(QStringLiteral("chromium"),
                      {QStringLiteral("--ozone-platform=") + platform, QStringLiteral("--no-sandbox"),
                       QStringLiteral("--disable-dev-shm-usage"), QStringLiteral("--disable-gpu"),
                       QStringLiteral("--no-first-run"), QStringLiteral("--no-default-browser-check"),
                       QStringLiteral("--disable-background-networking"),
                       QStringLiteral("--password-store=basic"),
                       QStringLiteral("--force-renderer-accessibility"),
                       QStringLiteral("--user-data-dir=") + app->folder_.filePath(QStringLiteral("profile"))},
                      text, kind);
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::firefox(const QString& text, WebPage::Kind kind) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->writeFile(QStringLiteral("user.js"), firefoxPreferences);
    app->startBrowser(QStringLiteral("firefox-esr"),
                      {QStringLiteral("--new-instance"), QStringLiteral("--profile"), app->folder_.path()},
                      text, kind);
    return app;
}

void DesktopApp::startTerminal(const QString& program, const QStringList& arguments) {
    received_ = folder_.filePath(QStringLiteral("received"));
    holds_ = [this] { return readFile(received_); };
    // The file appears when the terminal is set up to hand every byte on at once.
    const auto keep = QStringLiteral("stty raw -echo && exec cat >>'%1'").arg(received_);
    start(program, arguments + QStringList{QStringLiteral("sh"), QStringLiteral("-c"), keep});
    waitForWindow();
    proveKeyboard(keycode::letterA, [this] { return !text().isEmpty(); });
    // Keys keep their order: once another one is there, none is on its way any more and what came can be
    // forgotten.
    PhysicalKeyboard().tap(keycode::space);
    (void)waitForText([](const QString& text) { return text.endsWith(QChar(u' ')); });
    empty();
}

std::unique_ptr<DesktopApp> DesktopApp::xterm() {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->startTerminal(QStringLiteral("xterm"), {QStringLiteral("-e")});
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::xfceTerminal() {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->startTerminal(QStringLiteral("xfce4-terminal"),
                       {QStringLiteral("--disable-server"), QStringLiteral("-x")});
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::foot() {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->startTerminal(QStringLiteral("foot"), {});
    return app;
}

std::unique_ptr<DesktopApp> DesktopApp::command(const QString& program, const QStringList& arguments) {
    std::unique_ptr<DesktopApp> app(new DesktopApp);
    app->start(program, arguments);
    app->waitForWindow();
    return app;
}

} // namespace lorvane
