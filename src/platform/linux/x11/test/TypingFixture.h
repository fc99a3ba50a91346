// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyPoster.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"

#include <QEventLoop>

#include <cmath>
#include <iostream>

namespace lorvane {

/// Types a text as the program does: a fragment at a time, each one read back before the next goes out.
class TypingFixture : public X11DesktopFixture {
 protected:
    struct Typed {
        QString text; ///< as it stands in the field after the last fragment
        std::vector<Duration> fragments;
        double charactersPerSecond = 0;
    };

    ~TypingFixture() override { runTool("setxkbmap", {"us", "-option", ""}); }

    static QStringList inFragments(const QString& text) {
        QStringList fragments(QString{});
        for (qsizetype i = 0; i < text.size();) {
            const qsizetype units = text.at(i).isHighSurrogate() ? 2 : 1;
            if (fragments.last().size() + units > 12) {
                fragments.append(QString());
            }
            fragments.last() += text.mid(i, units);
            i += units;
        }
        return fragments;
    }
    std::optional<PostOutcome> post(const DesktopApp& app, const QString& fragment) {
        const PostingTarget target{{app.pid(), {}, {}}, FieldElement(QStringLiteral("field")), 0};
        std::optional<PostOutcome> outcome;
        const TaskHandle task = startTask([&, this](TaskScope scope) -> QCoro::Task<void> {
            outcome = co_await poster.post(target, fragment, scope);
        });
        EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
        return outcome;
    }
    /// Looks every millisecond, for times to be worth something.
    bool waitClosely(const std::function<bool()>& condition) {
        const Instant deadline = clock.now() + std::chrono::seconds(3);
        while (!condition() && clock.now() < deadline) {
            QEventLoop loop;
            const Handle next = clock.after(std::chrono::milliseconds(1), [&loop] { loop.quit(); });
            loop.exec();
        }
        return condition();
    }
    /// Into an empty field. Ends with the first fragment that does not arrive.
    Typed type(const DesktopApp& app, const QString& text) {
        Typed typed;
        // One for all tests: the accessibility library cannot be begun a second time in a process.
        static const FieldReader reader;
        EXPECT_TRUE(reader.focused(app.pid()));
        QString expected;
        const Instant start = clock.now();
        for (const QString& fragment : inFragments(text)) {
            const Instant before = clock.now();
            expected += fragment;
            EXPECT_EQ(post(app, fragment), PostOutcome::posted);
            (void)waitClosely([&] { return (typed.text = read(reader)) == expected; });
            typed.fragments.push_back(clock.now() - before);
            if (typed.text != expected) {
                break;
            }
        }
        typed.charactersPerSecond = static_cast<double>(expected.size()) / inSeconds(clock.now() - start);
        return typed;
    }
    static QString read(const FieldReader& reader) {
        QString text = reader.textAgain().value_or(QString());
        return text.endsWith(QChar(u'\n')) ? text.chopped(1) : text;
    }
    void expectTyped(const DesktopApp& app, const QString& text) {
        const Typed typed = type(app, text);
        EXPECT_EQ(typed.text.toStdString(), text.toStdString());
        std::cout << "[ measured ] " << std::lround(typed.charactersPerSecond) << " characters/s\n";
    }
    QByteArray mapOfAllKeys() {
        const ToolResult result = runTool("xkbcomp", {"-xkb", qEnvironmentVariable("DISPLAY"), "-"});
        EXPECT_EQ(result.status, 0) << result.errors.constData();
        QByteArray map = result.output; // which leaves out keys that have no name
        for (int key = 8; key < 256; ++key) {
            map += QByteArray::number(key) + ' ' + QByteArray::number(symbolOn(static_cast<XKeyCode>(key))) +
                   '\n';
        }
        return map;
    }
    xcb_keysym_t symbolOn(XKeyCode key) {
        const auto answer = connection.reply(xcb_get_keyboard_mapping_reply,
                                             xcb_get_keyboard_mapping(connection.xcb(), key, 1));
        return answer ? xcb_get_keyboard_mapping_keysyms(answer.get())[0] : XKB_KEY_NoSymbol;
    }

    Duration settleTime = std::chrono::milliseconds(5);
    TypingLayout layout{connection};
    X11KeyPoster poster{connection, clock, layout, [this](const RunningApplication&) { return settleTime; }};
};

} // namespace lorvane
