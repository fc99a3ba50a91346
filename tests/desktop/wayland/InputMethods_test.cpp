// SPDX-License-Identifier: GPL-3.0-or-later
// Input methods of the user's own, in each of the ways in which a session has them.
#include "desktop/program/LiveTypingDesk.h"
#include "support/Corpus.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <stdexcept>

namespace lorvane {

namespace {

/// A program that runs until the test is over, once it has said that it is ready.
class Theirs {
 public:
    Theirs(const QString& program, const QByteArray& ready, const QStringList& arguments = {}) {
        process_.start(program, arguments);
        if (!process_.waitForStarted() || !waitUntil([this] { return process_.canReadLine(); }) ||
            process_.readLine() != ready) {
            throw std::runtime_error("not ready: " + process_.readAllStandardError().toStdString());
        }
    }
    Theirs(const Theirs&) = delete;
    Theirs& operator=(const Theirs&) = delete;
    ~Theirs() {
        process_.kill();
        process_.waitForFinished();
    }
    [[nodiscard]] bool isRunning() const { return process_.state() == QProcess::Running; }

 private:
    QProcess process_;
};

// sway: the seat has one input method, and somebody else has it.

using OtherInputMethod = LiveTypingDesk;

TEST_F(OtherInputMethod, HasABrowserTypedIntoByAnotherRoad) {
    const Theirs theirs(QStringLiteral(HOLD_INPUT_METHOD), "it is ours\n");
    startProgram();
    const auto browser = DesktopApp::chromium(own);
    LiveStream stream = dictate();
    const QString text = QStringLiteral("Typed beside another input method — ещё раз.");
    EXPECT_TRUE(isTyped(stream, text, *browser)) << program->log().toStdString();
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("takes text by virtual keyboard")));
    EXPECT_TRUE(holds(*browser, own + text));
    EXPECT_TRUE(theirs.isRunning());
}

// IBus: an engine that composes is in force, in GNOME and wherever applications speak to the daemon.

class OtherEngine : public LiveTypingDesk {
 protected:
    static QString inForce() {
        return QString::fromUtf8(
            runTool(QStringLiteral("ibus"), {QStringLiteral("engine")}).output.trimmed());
    }
    void compose(int letter) { hand.tap(letter); }
    void endComposing() { hand.tap(keycode::space); }

    const Theirs theirs{QStringLiteral(COMPOSING_ENGINE), "it is in force\n"};
};

TEST_F(OtherEngine, IsBackAfterATakeWasTypedIntoABrowser) {
    startProgram();
    const auto browser = DesktopApp::chromium(own);
    compose(keycode::letterA);
    endComposing();
    const QString before = own + QChar(u'A');
    ASSERT_TRUE(holds(*browser, before));
    LiveStream stream = dictate();
    const QString text = corpus::mixed(200, 3);
    stream.say(corpus::fragments(text));
    EXPECT_TRUE(holds(*browser, before + text)) << program->log().toStdString();
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("takes text by input method (IBus)")));
    EXPECT_TRUE(waitUntil([] { return inForce() == QLatin1String("composer"); })) << inForce().toStdString();
    compose(keycode::letterZ);
    endComposing();
    EXPECT_TRUE(holds(*browser, before + text + QChar(u'Z')));
    EXPECT_TRUE(theirs.isRunning());
}

TEST_F(OtherEngine, IsLeftAloneWhileItComposesAndTheTextIsPasted) {
    startProgram();
    const auto browser = DesktopApp::chromium(own);
    compose(keycode::letterA);
    ASSERT_TRUE(holds(*browser, own + QChar(u'a'))) << "it is shown as it is composed";
    LiveStream stream = dictate();
    const QString text = QStringLiteral("Said in the middle of a word — посередине.");
    stream.say(corpus::fragments(text));
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("there is no way into")));
    const QString seen = browser->waitForText([&](const QString& now) { return now.contains(text); });
    EXPECT_TRUE(seen.startsWith(own) && seen.contains(text)) << seen.toStdString();
    EXPECT_EQ(inForce(), QStringLiteral("composer"));
}

class SlowEngine : public LiveTypingDesk {
 protected:
    const Theirs theirs{QStringLiteral(COMPOSING_ENGINE), "it is in force\n", {QStringLiteral("0.1")}};
};

TEST_F(SlowEngine, DoesNotMakeALetterOfThePasteKeys) {
    const auto editor = DesktopApp::mousepad();
    const QString text = QStringLiteral("Pasted, and nothing else — вставлено.");
    startHearing(text);
    holdFor(std::chrono::milliseconds(600));
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(text), text) << program->log().toStdString();
    EXPECT_TRUE(theirs.isRunning());
}

// KWin: the user has chosen another program as its input method.

class OtherProgramOfKWin : public LiveTypingDesk {
 protected:
    /// Returns what was chosen before.
    static QByteArray choose(const QByteArray& entry) {
        QFile settings(QDir::homePath() + QStringLiteral("/.config/kwinrc"));
        if (!settings.open(QIODevice::ReadWrite)) {
            throw std::runtime_error("there are no settings of KWin");
        }
        QList<QByteArray> lines = settings.readAll().split('\n');
        QByteArray before;
        for (QByteArray& line : lines) {
            if (line.startsWith("InputMethod")) {
                before = line.mid(line.indexOf('=') + 1);
                line = "InputMethod=" + entry;
            }
        }
        settings.resize(0);
        settings.write(lines.join('\n'));
        settings.close();
        tellKwin();
        return before;
    }
    /// As KDE's settings tell of a change: the names as bytes without an end.
    static void tellKwin() {
        QStringList bytes;
        for (const char letter : QByteArray("InputMethod")) {
            bytes.append(QStringLiteral("byte %1").arg(static_cast<int>(letter)));
        }
        (void)runTool(QStringLiteral("gdbus"),
                      {QStringLiteral("emit"), QStringLiteral("--session"), QStringLiteral("--object-path"),
                       QStringLiteral("/kwinrc"), QStringLiteral("--signal"),
                       QStringLiteral("org.kde.kconfig.notify.ConfigChanged"),
                       QStringLiteral("{'Wayland': [[%1]]}").arg(bytes.join(QChar(u',')))});
    }
    /// The desktop entry of a program that takes KWin's input method and does nothing with it.
    static QByteArray otherEntry() {
        QFile file(QDir::homePath() + QStringLiteral("/other.desktop"));
        if (!file.open(QIODevice::WriteOnly)) {
            throw std::runtime_error("the desktop entry cannot be written");
        }
        file.write(
            "[Desktop Entry]\nType=Application\nName=Other\nX-KDE-Wayland-VirtualKeyboard=true\nExec=" +
            QByteArray(HOLD_INPUT_METHOD) + " " + said().toUtf8() + "\n");
        return file.fileName().toUtf8();
    }
    /// As the doctor sees it.
    [[nodiscard]] bool isTypedByKwin() const {
        QByteArray report;
        (void)program->run({QStringLiteral("doctor")}, &report);
        return report.contains("input method (KWin)");
    }
    static QString said() { return QDir::homePath() + QStringLiteral("/other-said"); }
};

TEST_F(OtherProgramOfKWin, HasABrowserPastedIntoUntilOursIsChosenAgain) {
    startProgram();
    const auto browser = DesktopApp::chromium(own);
    const QByteArray ours = choose(otherEntry());
    ASSERT_TRUE(waitUntil([] { return QFile::exists(said()); })) << "KWin has not started it";
    LiveStream first = dictate();
    const QString pasted = QStringLiteral("Pasted beside another — вставлено. ");
    first.say(corpus::fragments(pasted));
    first.finish(pasted.trimmed());
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("there is no way into")));
    EXPECT_TRUE(holds(*browser, own + pasted.trimmed()));
    choose(ours);
    ASSERT_TRUE(waitUntil([this] { return isTypedByKwin(); }));
    LiveStream second = dictate();
    const QString typed = QStringLiteral(" Typed again — снова.");
    second.say(corpus::fragments(typed));
    EXPECT_TRUE(holds(*browser, own + pasted.trimmed() + typed)) << program->log().toStdString();
    second.finish(typed);
    EXPECT_TRUE(goesThrough(delivered));
}

} // namespace

} // namespace lorvane
