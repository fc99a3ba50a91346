// SPDX-License-Identifier: GPL-3.0-or-later
// Terminals whose paste keys are not to be had as elsewhere.
#include "desktop/program/LiveTypingDesk.h"
#include "support/Corpus.h"
#include "support/UserSession.h"

namespace lorvane {

namespace {

class TerminalDesk : public LiveTypingDesk {
 protected:
    /// Returns the text, which the terminal holds then.
    QString dictateInto(const DesktopApp& terminal) {
        startProgram();
        LiveStream stream = dictate();
        const QString text = corpus::mixed(200);
        stream.say(corpus::fragments(text));
        stream.finish(text);
        EXPECT_TRUE(goesThrough(delivered));
        EXPECT_TRUE(holds(terminal, text));
        return text;
    }
};

/// It shows nothing on the accessibility bus: its keys are known by its window alone.
class TerminalOfWayland : public TerminalDesk {};

TEST_F(TerminalOfWayland, IsPastedIntoByItsOwnKeys) {
    const auto terminal = DesktopApp::foot();
    dictateInto(*terminal);
    EXPECT_TRUE(logs(QStringLiteral("not armed in Foot: the field cannot be read")));
}

/// The selection of the middle mouse button. (What wl-copy puts there is not for KWin, which tells it of no
/// such selection as long as there is none.)
QString selected() {
    const ToolResult result = session::isWayland()
                                  ? runTool(QStringLiteral("wl-paste"),
                                            {QStringLiteral("--primary"), QStringLiteral("--no-newline")})
                                  : runTool(QStringLiteral("xclip"), {QStringLiteral("-o")});
    return QString::fromUtf8(result.output);
}

/// The desktop has the layout ru and no other.
class WithoutLatinLetters : public TerminalDesk {};

TEST_F(WithoutLatinLetters, ATerminalGetsTheTextAndBothSelectionsComeBack) {
    const clipboard::Copy copy("what the user copied");
    const QString ofTheUser = QStringLiteral("what the user selected");
    const auto editor = DesktopApp::mousepad(ofTheUser);
    hand.tap(keycode::home);
    hand.chord({keycode::leftShift, keycode::end});
    ASSERT_TRUE(waitUntil([&] { return selected() == ofTheUser; })) << selected().toStdString();
    const auto terminal = DesktopApp::xfceTerminal();
    const QString text = dictateInto(*terminal);
    EXPECT_TRUE(logs(QStringLiteral("took the text")));
    EXPECT_TRUE(waitUntil([] { return clipboard::read() == QByteArray("what the user copied"); }));
    EXPECT_TRUE(waitUntil([&] { return selected() == ofTheUser; })) << selected().toStdString();
    EXPECT_TRUE(holds(*terminal, text)) << "nothing came after the text";
}

} // namespace

} // namespace lorvane
