// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Wait.h"

#include <memory>
#include <optional>

#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

namespace lorvane {

// A real application in the virtual desktop, up and with the focus in its text when it is handed out, and
// ended with this object. Starting and reading throw std::runtime_error that says what was seen instead.
class DesktopApp {
 public:
    static std::unique_ptr<DesktopApp> mousepad(const QString& text = {});   // GTK
    static std::unique_ptr<DesktopApp> featherpad(const QString& text = {}); // Qt
    // A terminal whose program keeps what it is sent; it shows nothing on the accessibility bus. It has taken
    // (and forgotten) keys of the ordinary keyboard when it is handed out.
    static std::unique_ptr<DesktopApp> xterm();
    // Any program with a text field that takes the focus by itself.
    static std::unique_ptr<DesktopApp> command(const QString& program, const QStringList& arguments);

    ~DesktopApp();
    DesktopApp(const DesktopApp&) = delete;
    DesktopApp& operator=(const DesktopApp&) = delete;

    qint64 pid() const { return process_.processId(); }
    quint32 window() const { return window_; }
    // The keys that lorvane-field prints: text, caret, role, toolkit, editable, password...; nothing when it
    // hangs.
    std::optional<QJsonObject> field() const;
    // What the application really holds, with the focus or without it: its field, or for a terminal what its
    // program has received.
    QString text() const;
    // The text as soon as it is as wanted, else the last one seen.
    QString waitForText(const QString& wanted, std::chrono::milliseconds bound = generously) const;
    QString waitForText(const std::function<bool(const QString&)>& isWanted,
                        std::chrono::milliseconds bound = generously) const;
    // Puts the caret or the selection, in the toolkit's own units.
    bool select(int first, int last) const;
    // Makes its window the active one and waits until it is.
    void focus();
    // A line for its standard input.
    void tell(const QString& line) { process_.write(line.toUtf8() + '\n'); }
    // Stops it as a hung program is stopped, and wakes it again.
    void hang();
    void wake();

 private:
    DesktopApp() = default;
    QString writeFile(const QString& text);
    void start(const QString& program, const QStringList& arguments);
    void waitForWindow();
    void proveKeyboard();

    QTemporaryDir folder_;
    QProcess process_;
    QString received_; // of a terminal: the file
    quint32 window_ = 0;
};

} // namespace lorvane
