// SPDX-License-Identifier: GPL-3.0-or-later
// A borrowed text and the real programs around it: the one it is for, and clipboard managers that want
// everything.
#include "ClipboardPeers.h"
#include "ProcessMemory.h"
#include "base/testing/VirtualClock.h"
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"

#include <QFile>

#include <iostream>

namespace lorvane {
namespace {

class ClipboardPrograms : public PasteboardOnDesktop {
 protected:
    ~ClipboardPrograms() override { pasteboard_.reset(); }
    /// An owner that answers late, on a busy machine, is waited for.
    void stopTheTime() { pasteboard_ = X11Pasteboard::open(standing_); }
    /// The chord, and the wait until the target has asked.
    void paste(const std::vector<int>& keys) {
        PhysicalKeyboard keyboard;
        EXPECT_EQ(pasteboard_->loanState().lastRequest, std::nullopt);
        const Instant posted = clock_.now();
        keyboard.chord(keys);
        EXPECT_TRUE(waitUntil([&] { return pasteboard_->loanState().lastRequest.has_value(); }))
            << "the target never asked";
        std::cout << "asked within " << inSeconds(clock_.now() - posted) * 1e3 << " ms after the chord\n";
    }

 private:
    VirtualClock standing_;
};

const std::vector<int> controlV{keycode::leftControl, keycode::letterV};
constexpr int insertKey = 118;

TEST_F(ClipboardPrograms, TheEditorGetsTheLentTextWhileEveryoneElseGetsTheOld) {
    const auto editor = DesktopApp::mousepad();
    const QString old = uniqueText("old");
    const ForeignOwner owner({{"text/plain", old.toUtf8()}});
    const QString text = uniqueText("dictated");
    const auto held = snapshot();
    lend(text, editor->pid(), held);
    EXPECT_EQ(askedByAnother("UTF8_STRING"), old.toUtf8());
    EXPECT_EQ(pasteboard_->loanState().lastRequest, std::nullopt);
    paste(controlV);
    EXPECT_EQ(editor->waitForText(text), text);
    EXPECT_EQ(askedByAnother("UTF8_STRING"), old.toUtf8());
    EXPECT_FALSE(pasteboard_->loanState().lost);
    pasteboard_->restore(held);
    EXPECT_EQ(askedByAnother("UTF8_STRING"), old.toUtf8());
}

TEST_F(ClipboardPrograms, TheReturnedClipboardIsPastedByAQtEditor) {
    const auto editor = DesktopApp::featherpad();
    const ForeignOwner owner({{"text/plain", "old"}});
    const auto held = snapshot();
    lend("dictated ", editor->pid(), held);
    paste(controlV);
    EXPECT_EQ(editor->waitForText("dictated "), "dictated ");
    pasteboard_->restore(held);
    PhysicalKeyboard().chord(controlV);
    EXPECT_EQ(editor->waitForText("dictated old"), "dictated old");
}

TEST_F(ClipboardPrograms, ATerminalThatReadsOnlyTheMiddleMouseButtonsTextGetsItThere) {
    stopTheTime();
    const auto terminal = DesktopApp::xterm();
    const ForeignOwner selected({{"text/plain", "selected elsewhere"}}, {"--selection"});
    const ForeignOwner copied({{"text/plain", "copied"}});
    const auto held = snapshot();
    lend("dictated", terminal->pid(), held, true);
    EXPECT_EQ(askedByAnother("UTF8_STRING", "primary"), "selected elsewhere");
    EXPECT_EQ(askedByAnother("UTF8_STRING"), "copied");
    paste({keycode::leftShift, insertKey});
    EXPECT_EQ(terminal->waitForText("dictated"), "dictated");
    pasteboard_->restore(held);
    EXPECT_EQ(askedByAnother("UTF8_STRING", "primary"), "selected elsewhere");
    EXPECT_EQ(askedByAnother("UTF8_STRING"), "copied");
}

TEST_F(ClipboardPrograms, AnEmptyMiddleMouseButtonIsEmptyAgain) {
    const auto terminal = DesktopApp::xterm();
    const auto held = snapshot();
    lend("dictated", terminal->pid(), held, true);
    paste({keycode::leftShift, insertKey});
    EXPECT_EQ(terminal->waitForText("dictated"), "dictated");
    pasteboard_->restore(held);
    EXPECT_EQ(askedByAnother("TARGETS", "primary"), std::nullopt);
}

TEST_F(ClipboardPrograms, ATextThatIsHandedOverStaysForAHungTerminal) {
    const auto terminal = DesktopApp::xterm();
    PhysicalKeyboard keyboard;
    terminal->hang();
    const auto held = snapshot();
    lend("dictated", terminal->pid(), held, true);
    keyboard.chord({keycode::leftShift, insertKey});
    pasteboard_->setString("dictated");
    terminal->wake();
    EXPECT_EQ(terminal->waitForText("dictated"), "dictated");
}

/// A clipboard manager at work, with the folders of this test.
struct Manager {
    QString name;
    std::unique_ptr<QProcess> process = std::make_unique<QProcess>();

    explicit Manager(const QStringList& command) : name(command.first()) {
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->start(command.first(), command.mid(1));
        if (!process->waitForStarted()) {
            throw std::runtime_error("cannot start " + name.toStdString());
        }
    }
    ~Manager() {
        if (process) {
            process->kill();
            process->waitForFinished();
        }
    }
    Manager(Manager&&) = default;
    Manager& operator=(Manager&&) = delete;
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    [[nodiscard]] bool holds(const QString& text) const {
        return process->state() == QProcess::Running &&
               memoryHolds(withDescendants(process->processId()), text);
    }
};

std::vector<Manager> everyManager() {
    std::vector<Manager> managers;
    managers.emplace_back(QStringList{"copyq"});
    managers.emplace_back(QStringList{"parcellite", "-n"});
    managers.emplace_back(QStringList{"xfce4-clipman"});
    return managers;
}

/// Copies texts until every manager has noted one: it shows that they look, and that a text that they have
/// seen is found in them.
QString textThatAllHaveSeen(const std::vector<Manager>& managers, std::unique_ptr<ForeignOwner>& owner) {
    QString text;
    const bool all = waitUntil(
        [&] {
            text = uniqueText("old");
            owner = std::make_unique<ForeignOwner>(Types{{"text/plain", text.toUtf8()}});
            return waitUntil(
                [&] {
                    return std::ranges::all_of(managers,
                                               [&](const auto& manager) { return manager.holds(text); });
                },
                std::chrono::seconds(3));
        },
        std::chrono::seconds(60));
    for (const auto& manager : managers) {
        EXPECT_TRUE(all) << manager.name.toStdString() << (manager.holds(text) ? " has" : " has not")
                         << " seen it; " << manager.process->readAll().toStdString();
    }
    return text;
}

TEST_F(ClipboardPrograms, NoClipboardManagerEverSeesALentTextOrTakesTheClipboardOver) {
    std::unique_ptr<ForeignOwner> owner;
    const auto managers = everyManager();
    const QString old = textThatAllHaveSeen(managers, owner);
    const auto editor = DesktopApp::mousepad();
    editor->focus();
    const QString text = uniqueText("dictated");
    for (int take = 0; take < 5; ++take) {
        const auto held = snapshot();
        ASSERT_TRUE(held.readable);
        const Instant lentAt = clock_.now();
        lend(text, editor->pid(), held);
        paste(controlV);
        // A loan lasts 1.6 seconds; managers that poll look three times in it.
        EXPECT_TRUE(waitUntil([&] { return clock_.now() - lentAt > seconds(1.6); }));
        EXPECT_FALSE(pasteboard_->loanState().lost) << "take " << take;
        pasteboard_->restore(held);
    }
    EXPECT_EQ(editor->waitForText(text.repeated(5)), text.repeated(5));
    for (const auto& manager : managers) {
        EXPECT_TRUE(manager.holds(old)) << manager.name.toStdString();
        EXPECT_FALSE(manager.holds(text)) << manager.name.toStdString() << " has the text";
    }
    EXPECT_EQ(askedByAnother("UTF8_STRING"), old.toUtf8());
}

} // namespace
} // namespace lorvane
