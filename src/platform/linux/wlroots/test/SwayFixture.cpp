// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/test/SwayFixture.h"

#include <QEventLoop>

#include <cmath>
#include <iostream>

namespace lorvane {

namespace {

QStringList inFragments(const QString& text) {
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

QString read(const FieldReader& reader) {
    QString text = reader.textAgain().value_or(QString());
    // Firefox puts one after every character above U+FFFF and at the end.
    text.remove(QChar(0xFEFF));
    return text.endsWith(QChar(u'\n')) ? text.chopped(1) : text;
}

PostingTarget targetOf(const DesktopApp& app) {
    return {{app.pid(), {}, {}}, FieldElement(QStringLiteral("field")), 0};
}

} // namespace

std::optional<PostOutcome> SwayFixture::post(FragmentPoster& poster, const DesktopApp& app,
                                             const QString& fragment) {
    std::optional<PostOutcome> outcome;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        outcome = co_await poster.post(targetOf(app), fragment, scope);
    });
    EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
    return outcome;
}

bool SwayFixture::canPost(FragmentPoster& poster, const DesktopApp& app) {
    bool can = false;
    const TaskHandle task = startTask(
        [&](TaskScope scope) -> QCoro::Task<void> { can = co_await poster.canPost(targetOf(app), scope); });
    EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
    return can;
}

void SwayFixture::settle(WaylandConnection& with) {
    bool done = false;
    const Handle served = with.afterServer([&done] { done = true; });
    with.flush();
    EXPECT_TRUE(waitClosely([&] { return done; }));
}

bool SwayFixture::waitClosely(const std::function<bool()>& condition) {
    const Instant deadline = clock.now() + std::chrono::seconds(3);
    while (!condition() && clock.now() < deadline) {
        QEventLoop loop;
        const Handle next = clock.after(std::chrono::milliseconds(1), [&loop] { loop.quit(); });
        loop.exec();
    }
    return condition();
}

QString SwayFixture::type(FragmentPoster& poster, const DesktopApp& app, const QString& text) {
    // One for all tests: the accessibility library cannot be begun a second time in a process.
    static const FieldReader reader;
    EXPECT_TRUE(reader.focused(app.pid()));
    QString expected;
    QString seen;
    const Instant start = clock.now();
    for (const QString& fragment : inFragments(text)) {
        expected += fragment;
        // "unknown" on a busy machine: what is read back counts.
        EXPECT_NE(post(poster, app, fragment), PostOutcome::refused);
        if (!waitClosely([&] { return (seen = read(reader)) == expected; })) {
            break;
        }
    }
    const double rate = static_cast<double>(expected.size()) / inSeconds(clock.now() - start);
    std::cout << "[ measured ] " << std::lround(rate) << " characters/s\n";
    return seen;
}

void SwayFixture::expectTyped(FragmentPoster& poster, const DesktopApp& app, const QString& text) {
    EXPECT_TRUE(canPost(poster, app));
    EXPECT_EQ(type(poster, app, text).toStdString(), text.toStdString());
    poster.finish();
}

} // namespace lorvane
