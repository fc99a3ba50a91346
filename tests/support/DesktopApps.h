// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Wait.h"
#include "support/WebPage.h"

#include <functional>
#include <memory>
#include <optional>

#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

namespace lorvane {

// A real application in the virtual desktop, up and with the focus in its text when it is handed out, and
// ended with this object, all its processes with it. In a Wayland session it is a native client, if it can
// be. Starting and reading throw std::runtime_error that says what was seen instead.
class DesktopApp {
 public:
    static std::unique_ptr<DesktopApp> mousepad(const QString& text = {});        // GTK 3
    static std::unique_ptr<DesktopApp> gnomeTextEditor(const QString& text = {}); // GTK 4
    static std::unique_ptr<DesktopApp> featherpad(const QString& text = {});      // Qt 5
    // LibreOffice, which corrects what is typed. A line of the text is a paragraph; the caret stands behind
    // it.
    static std::unique_ptr<DesktopApp> writer(const QString& text = {});
    // Browsers that show a page with one text, with accessibility as they have it when it is switched on for
    // them. The caret stands behind the text.
    static std::unique_ptr<DesktopApp> chromium(const QString& text = {},
                                                WebPage::Kind kind = WebPage::Kind::area);
    static std::unique_ptr<DesktopApp> firefox(const QString& text = {},
                                               WebPage::Kind kind = WebPage::Kind::area);
    // Terminals whose program keeps what it is sent. They have taken (and forgotten) keys of the ordinary
    // keyboard when they are handed out. The first shows nothing on the accessibility bus.
    static std::unique_ptr<DesktopApp> xterm();
    static std::unique_ptr<DesktopApp> xfceTerminal();
    // A window of Wayland that shows nothing on the accessibility bus.
    static std::unique_ptr<DesktopApp> foot();
    // Any program with a text field that takes the focus by itself.
    static std::unique_ptr<DesktopApp> command(const QString& program, const QStringList& arguments);

    ~DesktopApp();
    DesktopApp(const DesktopApp&) = delete;
    DesktopApp& operator=(const DesktopApp&) = delete;

    // Of the process that its window belongs to.
    qint64 pid() const { return pid_; }
    quint32 window() const { return window_; }
    // The keys that lorvane-field prints: text, caret, role, toolkit, editable, password...; nothing when it
    // hangs.
    std::optional<QJsonObject> field() const;
    // What the application really holds, with the focus or without it: its field, a word processor's
    // document, what a browser's page says, or what a terminal's program has received. A change may show a
    // moment later.
    QString text() const;
    // The text as soon as it is as wanted, else the last one seen.
    QString waitForText(const QString& wanted, std::chrono::milliseconds bound = generously) const;
    QString waitForText(const std::function<bool(const QString&)>& isWanted,
                        std::chrono::milliseconds bound = generously) const;
    // Puts the caret or the selection, in the toolkit's own units.
    bool select(int first, int last) const;
    // Makes its window the active one and waits until it is.
    void focus();
    // Takes all its text away by hand, as a user does, and waits until it is gone.
    void empty();
    // A line for its standard input.
    void tell(const QString& line) { process_.write(line.toUtf8() + '\n'); }
    // The page of a browser.
    const WebPage& page() const { return *page_; }
    // Stops it as a hung program is stopped, and wakes it again.
    void hang();
    void wake();
    // Ends all of it at once, with nothing saved.
    void kill();
    bool isRunning() const { return process_.state() == QProcess::Running; }

 private:
    DesktopApp() = default;
    QString writeFile(const QString& name, const QByteArray& content);
    void start(const QString& program, const QStringList& arguments);
    void setEnvironment(const QString& name, const QString& value);
    void startEditor(const QString& program, const QStringList& arguments, const QString& text);
    void startBrowser(const QString& program, const QStringList& arguments, const QString& text,
                      WebPage::Kind kind);
    void startTerminal(const QString& program, const QStringList& arguments);
    void waitForWindow();
    void waitUntilQuiet() const;
    bool ownsActiveWindow();
    static void bringForward(const QList<qint64>& family);
    bool hasKeyboard() const;
    QString readText(const QString& how) const;
    void proveKeyboard(int key, const std::function<bool()>& arrived) const;

    QTemporaryDir folder_;
    QProcess process_;
    qint64 pid_ = 0;
    quint32 window_ = 0;
    std::function<QString()> holds_; // reads its text where its field does not tell it
    QString received_;               // of a terminal: the file
    std::unique_ptr<WebPage> page_;  // of a browser
};

} // namespace lorvane
