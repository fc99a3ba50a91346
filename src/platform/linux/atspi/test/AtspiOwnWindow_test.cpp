// SPDX-License-Identifier: GPL-3.0-or-later
// A window of this very process, so the suite is a graphical application and a program of its own.
#include "platform/linux/atspi/test/TypingFixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace lorvane {
namespace {

class OwnWindow : public AtspiTypingTest {
 protected:
    OwnWindow() {
        password.setEchoMode(QLineEdit::Password);
        for (QWidget* field : std::initializer_list<QWidget*>{&area, &line, &password}) {
            layout.addWidget(field);
        }
        window.show();
        if (!until([this] { return window.isActiveWindow(); })) {
            throw std::runtime_error("the window does not become active");
        }
        area.setFocus();
    }

    const ProcessId ourselves = QCoreApplication::applicationPid();
    QWidget window;
    QVBoxLayout layout{&window};
    QPlainTextEdit area;
    QLineEdit line;
    QLineEdit password;
};

TEST_F(OwnWindow, AFieldOfOursIsFoundAndReadAsAnyOther) {
    area.setPlainText(QString::fromUtf8("a😀b\n"));
    area.moveCursor(QTextCursor::End);
    area.moveCursor(QTextCursor::PreviousCharacter);
    EXPECT_TRUE(reads(ourselves, 5, 4, QStringLiteral("\n")));
    EXPECT_TRUE(readOnceTold(ourselves).multiLine);
    line.setText(QStringLiteral("one"));
    line.setFocus();
    EXPECT_TRUE(reads(ourselves, 3, 3, QString()));
    EXPECT_FALSE(readOnceTold(ourselves).multiLine);
}

TEST_F(OwnWindow, AFieldOfOursIsFoundWhoseEventsWereMissed) {
    ASSERT_TRUE(reads(ourselves, 0, 0, QString()));
    AtspiFieldAccess late{bus, accessibilitySwitch, workspace, clock};
    std::optional<FieldElement> found;
    EXPECT_TRUE(until([&] {
        found = finish<std::optional<FieldElement>>(
            [&](TaskScope scope) { return late.focusedElement(ourselves, scope); });
        return found.has_value();
    }));
    EXPECT_EQ(found, focusOnceTold(ourselves));
}

TEST_F(OwnWindow, AnOwnPasswordIsToldAndNotRead) {
    workspace.front = RunningApplication{ourselves, {}, {}};
    password.setText(QStringLiteral("secret"));
    password.setFocus();
    EXPECT_TRUE(until([this] { return isSecure(); }));
    const auto element = focusOnceTold(ourselves);
    ASSERT_TRUE(element);
    EXPECT_FALSE(read(*element));
    EXPECT_FALSE(canPost(targetIn(ourselves, 0)));
}

TEST_F(OwnWindow, FragmentsGoIntoOurOwnFieldsAndTheMainLoopNeverStands) {
    ASSERT_TRUE(reads(ourselves, 0, 0, QString()));
    qint64 longestGap = 0;
    QElapsedTimer sinceBeat;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout,
                     [&] { longestGap = std::max(longestGap, sinceBeat.restart()); });
    sinceBeat.start();
    beat.start(1);
    const TypingFigures figures = type(ourselves, dictation(300));
    ASSERT_TRUE(figures.landed) << figures;
    line.setFocus();
    ASSERT_TRUE(reads(ourselves, 0, 0, QString()));
    ASSERT_TRUE(type(ourselves, QStringList(20, mixedFragment)).landed);
    beat.stop();
    figures.print("own window");
    std::cout << "longest gap of the main loop " << longestGap << " ms\n";
    EXPECT_EQ(area.toPlainText(), dictation(300).join(QString()));
    EXPECT_EQ(line.text(), mixedFragment.repeated(20));
    // A call that waited for ourselves would stand for its whole bound of 150 ms; a busy machine takes tens.
    EXPECT_LE(longestGap, 120);
}

} // namespace
} // namespace lorvane

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Qt shows the windows of this process only if this stands before its application is made.
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
