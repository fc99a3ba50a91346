// SPDX-License-Identifier: GPL-3.0-or-later
// The pill above a fullscreen window of another program, as the compositor shows it.
#include "desktop/program/DictationDesk.h"
#include "support/UserSession.h"
#include "support/Windows.h"

#include <QtGui/QImage>

#include <cstdlib>

namespace lorvane {

namespace {

const QString heard = QStringLiteral("Hello from the pill.");
constexpr QColor recording(200, 89, 62);
constexpr QColor resting(199, 194, 186); // of the bars at rest
constexpr QRect capsule(572, 774, 136, 22);
constexpr QPoint middle(640, 785);
constexpr std::chrono::milliseconds twiceATap{700};

bool isNear(const QColor& seen, const QColor& wanted) {
    constexpr int tolerance = 14;
    return std::abs(seen.red() - wanted.red()) <= tolerance &&
           std::abs(seen.green() - wanted.green()) <= tolerance &&
           std::abs(seen.blue() - wanted.blue()) <= tolerance;
}

class PillAbove : public DictationDesk {
 protected:
    /// The picture is kept under this name.
    static ::testing::AssertionResult shows(const QColor& colour, const QString& name) {
        const bool good = waitUntil([&] {
            const QImage screen(session::takePicture(name));
            for (int y = capsule.top(); y <= capsule.bottom(); ++y) {
                for (int x = capsule.left(); x <= capsule.right(); ++x) {
                    if (isNear(screen.pixelColor(x, y), colour)) {
                        return true;
                    }
                }
            }
            return false;
        });
        return good ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << "not in the picture " << name.toStdString();
    }

    /// The recording has gone on for longer than a tap lasts, so that its end sends it.
    [[nodiscard]] bool isMoreThanATap() const {
        return waitUntil([this] {
            return program->phase() == QStringLiteral("recording") &&
                   std::chrono::steady_clock::now() - program->lastPhaseAt() > twiceATap;
        });
    }

    static void fillScreen(const DesktopApp& editor) {
        session::makeFullscreen(editor.window());
        ASSERT_TRUE(waitUntil([] {
            const QImage screen(session::takePicture(QStringLiteral("fullscreen")));
            return isNear(screen.pixelColor(10, screen.height() - 10), Qt::white);
        }));
    }
};

TEST_F(PillAbove, ItShowsATakeAboveAFullscreenWindowWhichKeepsTheKeyboard) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    fillScreen(*editor);
    EXPECT_TRUE(shows(resting, QStringLiteral("pill-at-rest")));
    hand.press(holdKey);
    EXPECT_TRUE(shows(recording, QStringLiteral("pill-recording")));
    EXPECT_EQ(windows::active().id, editor->window());
    EXPECT_TRUE(isMoreThanATap());
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    hand.tap(keycode::letterA);
    EXPECT_EQ(editor->waitForText(heard + QChar(u'a')), heard + QChar(u'a'));
}

TEST_F(PillAbove, AClickStartsATakeAndAnotherEndsItWithTheFocusWhereItWas) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    fillScreen(*editor);
    EXPECT_TRUE(shows(resting, QStringLiteral("pill-before-the-click")));
    session::click(middle);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording"))) << program->log().toStdString();
    EXPECT_EQ(windows::active().id, editor->window());
    stay(std::chrono::milliseconds(800));
    session::click(middle);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

} // namespace

} // namespace lorvane
