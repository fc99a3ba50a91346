// SPDX-License-Identifier: GPL-3.0-or-later
// A terminal that shows nothing on the accessibility bus: its keys are known by its window alone.
#include "desktop/program/LiveTypingDesk.h"
#include "support/Corpus.h"

namespace lorvane {

namespace {

class TerminalOfWayland : public LiveTypingDesk {};

TEST_F(TerminalOfWayland, IsPastedIntoByItsOwnKeys) {
    const auto terminal = DesktopApp::foot();
    startProgram();
    LiveStream stream = dictate();
    const QString text = corpus::mixed(200);
    stream.say(corpus::fragments(text));
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(holds(*terminal, text));
    EXPECT_TRUE(logs(QStringLiteral("not armed in Foot: the field cannot be read")));
}

} // namespace

} // namespace lorvane
