// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ScriptedBackend.h"

#include <QtCore/QJsonObject>

namespace lorvane {

// A page with one text, served on loopback for a browser that a test has started. The page itself reports
// what its text holds, so this is known without accessibility.
class WebPage {
 public:
    enum class Kind {
        area, // of several lines
        line, // of one, in a form: Return sends the form
        deaf, // an area that takes no keys for text; pasting works
    };

    // The caret stands behind the text.
    explicit WebPage(const QString& text, Kind kind = Kind::area);

    QUrl url() const { return server_.url(); }
    QString text() const { return report().value(QStringLiteral("text")).toString(); }
    // The text has the keyboard.
    bool hasFocus() const { return report().value(QStringLiteral("focused")).toBool(); }
    // How often the form was sent.
    int sent() const { return report().value(QStringLiteral("sent")).toInt(); }
    // How many keys have gone down in it.
    int keys() const { return report().value(QStringLiteral("keys")).toInt(); }
    // Drops all reports but the latest, which a long test would otherwise pile up.
    void tidy() { server_.forgetEarlier(reportPath); }

 private:
    static constexpr const char* reportPath = "/report";
    QJsonObject report() const;

    ScriptedBackend server_;
};

} // namespace lorvane
