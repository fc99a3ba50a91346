// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/test/IbusFixture.h"

#include "support/Corpus.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"
#include "support/PhysicalKeyboard.h"

#include <QSysInfo>

#include <cmath>
#include <iostream>

namespace lorvane {

namespace {

const QString everyScript = QStringLiteral(
    "The Quick (brown) fox, 7 > 3 & \"so\" \\ #1 {a}[b] ~user@host.org; it's 100%! Zażółć gęślą jaźń, ÉTÉ où "
    "ça œuvre — “Straße” ñandú €5… Съешь же ещё этих мягких булок, да выпей чаю. Ξεσκεπάζω τὴν βδελυγμία "
    "今天下午三点开会，请把报告发给我。これは日本語の文章です。👍🏽 👩‍👩‍👧‍👦 🏳️‍🌈 ❤️ "
    "ok "
    "😀😀 "
    "👨‍💻 ");

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

/// In a session whose shell speaks to the daemon for its applications.
class IbusSession : public IbusFixture {
 protected:
    void SetUp() override {
        ASSERT_TRUE(waitClosely([this] { return poster.isConnected(); }));
        // The shell sets one a moment after it has come up.
        ASSERT_TRUE(waitUntil([this] { return !(users = inForce()).isEmpty(); }));
    }
    static QString inForce() {
        const QStringList command{QStringLiteral("XDG_CONFIG_HOME=") + configFolder(), QStringLiteral("ibus"),
                                  QStringLiteral("engine")};
        return QString::fromUtf8(runTool(QStringLiteral("env"), command).output.trimmed());
    }
    /// What stands in the field without what toolkits add to it.
    static QString read(const FieldReader& reader) {
        QString text = reader.textAgain().value_or(QString());
        text.remove(QChar(0xFEFF));
        return text.endsWith(QChar(u'\n')) ? text.chopped(1) : text;
    }
    /// 2,000 units and more, a fragment at a time, each read back before the next.
    void expectTyped(const DesktopApp& app) {
        // One for all tests: the accessibility library cannot be begun a second time in a process.
        static const FieldReader reader;
        ASSERT_TRUE(reader.focused(app.pid()));
        ASSERT_EQ(canPost(poster), true);
        QString expected;
        QString seen;
        const Instant start = clock.now();
        for (const QString& fragment : inFragments(everyScript.repeated(8))) {
            expected += fragment;
            ASSERT_EQ(post(poster, fragment), PostOutcome::posted);
            if (!waitClosely([&] { return (seen = read(reader)) == expected; })) {
                break;
            }
        }
        const double rate = static_cast<double>(expected.size()) / inSeconds(clock.now() - start);
        EXPECT_EQ(seen.toStdString(), expected.toStdString());
        std::cout << "[ measured ] " << expected.size() << " units, " << std::lround(rate) << " a second\n";
        poster.finish();
        EXPECT_TRUE(waitUntil([this] { return inForce() == users; }));
        EXPECT_EQ(remembered, QString());
    }

    /// The session's own; a suite has others.
    static QString configFolder() {
        return qEnvironmentVariable("LORVANE_DESKTOP") + QStringLiteral("/home/.config");
    }
    static IbusAddressPlaces places() {
        return ibusAddressPlaces(QProcessEnvironment::systemEnvironment(), configFolder(),
                                 QString::fromLatin1(QSysInfo::machineUniqueId()));
    }

    IbusPoster poster{clock, log, memory(), places()};
    QString users;
};

TEST_F(IbusSession, TypesEveryScriptIntoGtk3) { expectTyped(*DesktopApp::mousepad()); }
TEST_F(IbusSession, TypesEveryScriptIntoGtk4) { expectTyped(*DesktopApp::gnomeTextEditor()); }
TEST_F(IbusSession, TypesEveryScriptIntoChromium) { expectTyped(*DesktopApp::chromium()); }
TEST_F(IbusSession, TypesEveryScriptIntoFirefox) { expectTyped(*DesktopApp::firefox()); }

} // namespace

} // namespace lorvane
