// SPDX-License-Identifier: GPL-3.0-or-later
// Applications that go away, hang, or take a key for something else than text.
#include "LiveTypingDesk.h"

namespace lorvane {

namespace {

const QString heard = QStringLiteral("These are the first words");
const QString more = QStringLiteral(", and there is more to come.");

class LiveTypingTrouble : public LiveTypingDesk, public ::testing::WithParamInterface<Application> {};

TEST_P(LiveTypingTrouble, AnApplicationThatIsKilledCostsThisTakeOnly) {
    startProgram();
    auto target = GetParam().open(own);
    LiveStream stream = dictate();
    ASSERT_TRUE(isTyped(stream, heard, *target));
    target->kill();
    stream.say(more);
    stream.finish(heard + more);
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle"))) << program->log().toStdString();
    EXPECT_EQ(clipboard::read(), (heard + more).toUtf8());
    target.reset();
    const auto next = GetParam().open(own);
    LiveStream again = dictate();
    ASSERT_TRUE(isTyped(again, heard, *next)) << program->log().toStdString();
    again.finish(heard);
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    EXPECT_TRUE(holds(*next, own + heard));
}

TEST_P(LiveTypingTrouble, AnApplicationThatHangsLeavesTheTextToTheUserAndGetsNothingTwice) {
    startProgram();
    const auto target = GetParam().open(own);
    LiveStream stream = dictate();
    ASSERT_TRUE(isTyped(stream, heard, *target));
    target->hang();
    stream.say(more);
    ASSERT_TRUE(logs(QStringLiteral("after %1 characters").arg(heard.size())));
    stream.finish(heard + more);
    EXPECT_TRUE(endsIn(copied));
    EXPECT_EQ(clipboard::read(), (heard + more).toUtf8());
    target->wake();
    // What was on its way when it hung may land, and nothing else.
    const auto mayStand = [&](const QString& text) { return (own + heard + more).startsWith(text); };
    const QString text = target->waitForText(mayStand);
    EXPECT_TRUE(mayStand(text) && text.startsWith(own + heard)) << text.toStdString();
}

TEST_P(LiveTypingTrouble, AProgramThatDiesWhileTypingLeavesTheKeyboardAsItWasOnceItIsBack) {
    const auto keyboard = [] {
        return runTool(QStringLiteral("xkbcomp"), {qEnvironmentVariable("DISPLAY"), QStringLiteral("-")})
            .output;
    };
    const QByteArray before = keyboard();
    startProgram();
    const auto target = GetParam().open(own);
    LiveStream stream = dictate();
    ASSERT_TRUE(isTyped(stream, QStringLiteral("щука 日本語 λόγος"), *target));
    program->kill();
    startProgram();
    EXPECT_TRUE(waitUntil([&] { return keyboard() == before; }));
    LiveStream next = dictate();
    next.say(QStringLiteral("ж漢"));
    next.finish(QStringLiteral("ж漢"));
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    EXPECT_TRUE(holds(*target, own + QStringLiteral("щука 日本語 λόγοςж漢")));
    EXPECT_TRUE(waitUntil([&] { return keyboard() == before; })) << "after a take";
}

INSTANTIATE_TEST_SUITE_P(, LiveTypingTrouble, ::testing::Values(application::mousepad, application::chromium),
                         nameOf);

class LineThatReturnSends : public LiveTypingDesk {
 protected:
    void isNotSent(const DesktopApp& target, const std::function<bool()>& wasSent) {
        startProgram();
        LiveStream stream = dictate();
        stream.say({heard, QStringLiteral("\n"), QStringLiteral("and\ta second line")});
        EXPECT_TRUE(logs(QStringLiteral("pasting the rest")));
        stream.finish(heard + QStringLiteral("\nand\ta second line"));
        EXPECT_TRUE(goesThrough(delivered));
        // A line shows the break as it likes: as a blank, a sign, or not at all.
        const auto isWhole = [](const QString& text) {
            return text.startsWith(heard) && text.endsWith(QStringLiteral("a second line"));
        };
        const QString text = target.waitForText(isWhole);
        EXPECT_TRUE(isWhole(text)) << text.toStdString() << program->log().toStdString();
        EXPECT_FALSE(wasSent());
    }
};

TEST_F(LineThatReturnSends, IsNotSentInADialogOfQt) {
    const auto dialog = DesktopApp::command(QStringLiteral(DIALOG_QT), {});
    isNotSent(*dialog, [&] { return !dialog->isRunning(); });
}

TEST_F(LineThatReturnSends, IsNotSentInADialogOfGtk) {
    const auto dialog = DesktopApp::command(QStringLiteral(DIALOG_GTK), {});
    isNotSent(*dialog, [&] { return !dialog->isRunning(); });
}

TEST_F(LineThatReturnSends, IsNotSentInABrowser) {
    const auto browser = DesktopApp::chromium(QString(), WebPage::Kind::line);
    isNotSent(*browser, [&] { return browser->page().sent() > 0; });
}

class LiveTypingFirstFragment : public LiveTypingDesk {};

TEST_F(LiveTypingFirstFragment, WhoDoesNotTakeItIsNotTypedIntoAgain) {
    startProgram();
    const auto browser = DesktopApp::chromium(own, WebPage::Kind::deaf);
    LiveStream stream = dictate();
    stream.say(heard);
    ASSERT_TRUE(logs(QStringLiteral("did not take the first fragment")));
    stream.finish(heard);
    EXPECT_TRUE(endsIn(copied));
    EXPECT_EQ(browser->text(), own);
    LiveStream next = dictate();
    next.say(heard);
    next.finish(heard);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("it could not keep up before")));
    EXPECT_TRUE(holds(*browser, own + heard));
}

} // namespace

} // namespace lorvane
