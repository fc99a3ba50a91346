// SPDX-License-Identifier: GPL-3.0-or-later
// Applications as users have them.
#include "platform/linux/atspi/test/TypingFixture.h"
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"

namespace lorvane {
namespace {

class Editors : public AtspiTypingTest {
 protected:
    void takesADictation(DesktopApp& app, const char* name) {
        EXPECT_TRUE(readOnceTold(app.pid()).multiLine);
        EXPECT_TRUE(canPost(targetIn(app.pid(), 0)));
        // The first fragment has the toolkit load its fonts.
        ASSERT_TRUE(type(app.pid(), {mixedFragment}).landed);
        const TypingFigures figures = type(app.pid(), dictation(100));
        ASSERT_TRUE(figures.landed) << figures;
        figures.print(name);
        const QString wanted = mixedFragment + dictation(100).join(QString());
        const QString seen = app.waitForText([&](const QString& text) { return text.startsWith(wanted); });
        EXPECT_EQ(seen.left(wanted.size()), wanted);
    }
};

TEST_F(Editors, MousepadTakesADictation) { takesADictation(*DesktopApp::mousepad(), "Mousepad (GTK 3)"); }

TEST_F(Editors, GnomeTextEditorTakesADictation) {
    takesADictation(*DesktopApp::gnomeTextEditor(), "GNOME Text Editor (GTK 4)");
}

TEST_F(Editors, FeatherpadTakesADictation) {
    takesADictation(*DesktopApp::featherpad(), "FeatherPad (Qt 5)");
}

TEST_F(Editors, WriterTakesADictationAndLeavesItUncorrected) {
    const auto app = DesktopApp::writer();
    ASSERT_TRUE(type(app->pid(), {QStringLiteral("it's (c) teh "), QStringLiteral("1/2 ...\n")}).landed);
    app->empty();
    takesADictation(*app, "LibreOffice Writer");
}

TEST_F(Editors, AParagraphOfWriterIsAFieldOfItsOwn) {
    const auto app = DesktopApp::writer(QString::fromUtf8("one\ntwo 😀"));
    EXPECT_TRUE(reads(app->pid(), 6, 6, QString()));
    EXPECT_TRUE(type(app->pid(), {QString::fromUtf8("😀 é"), QStringLiteral("\n")}).landed);
    EXPECT_EQ(app->waitForText(QString::fromUtf8("one\ntwo 😀😀 é\n")).toStdString(),
              std::string("one\ntwo 😀😀 é\n"));
}

struct Browser {
    const char* name;
    std::unique_ptr<DesktopApp> (*start)(const QString& text, WebPage::Kind kind);
    bool saysItInserts;
};

void PrintTo(const Browser& browser, std::ostream* out) { *out << browser.name; }

class Browsers : public AtspiTypingTest, public ::testing::WithParamInterface<Browser> {
 protected:
    PhysicalKeyboard hand;
};

TEST_P(Browsers, ATextAreaIsReadAsItsPageHasItWhileAHandTypes) {
    const QString text = QString::fromUtf8("ab😀\nc😀");
    const auto app = GetParam().start(text, WebPage::Kind::area);
    EXPECT_TRUE(reads(app->pid(), 8, 8, QString()));
    EXPECT_TRUE(readOnceTold(app->pid()).multiLine);
    hand.tap(keycode::letterA);
    EXPECT_TRUE(reads(app->pid(), 9, 9, QString()));
    hand.tap(keycode::enter);
    EXPECT_TRUE(reads(app->pid(), 10, 10, QString()));
    hand.tap(keycode::enter);
    EXPECT_TRUE(reads(app->pid(), 11, 11, QString()));
    hand.tap(keycode::letterQ);
    EXPECT_TRUE(reads(app->pid(), 12, 12, QString()));
    EXPECT_EQ(app->waitForText(text + QStringLiteral("a\n\nq")), text + QStringLiteral("a\n\nq"));
}

TEST_P(Browsers, ALineIsReadAndTakesNoLineBreaks) {
    const auto app = GetParam().start(QString(), WebPage::Kind::line);
    EXPECT_TRUE(reads(app->pid(), 0, 0, QString()));
    EXPECT_FALSE(readOnceTold(app->pid()).multiLine);
    hand.tap(keycode::letterA);
    EXPECT_TRUE(reads(app->pid(), 1, 1, QString()));
}

TEST_P(Browsers, NothingIsInsertedWhateverTheBrowserSays) {
    const auto app = GetParam().start(QStringLiteral("kept "), WebPage::Kind::area);
    ASSERT_TRUE(reads(app->pid(), 5, 5, QString()));
    const PostingTarget target = targetIn(app->pid(), 5);
    EXPECT_EQ(canPost(target), GetParam().saysItInserts);
    const auto outcome = post(target, QStringLiteral("new"));
    EXPECT_NE(outcome, GetParam().saysItInserts ? PostOutcome::refused : PostOutcome::posted);
    hand.tap(keycode::letterA);
    EXPECT_TRUE(reads(app->pid(), 6, 6, QString()));
    EXPECT_EQ(app->waitForText(QStringLiteral("kept a")), QStringLiteral("kept a"));
}

INSTANTIATE_TEST_SUITE_P(Desktop, Browsers,
                         ::testing::Values(Browser{"Chromium", &DesktopApp::chromium, false},
                                           Browser{"Firefox", &DesktopApp::firefox, true}),
                         [](const auto& browser) { return std::string(browser.param.name); });

} // namespace
} // namespace lorvane
