// SPDX-License-Identifier: GPL-3.0-or-later
// What a user sees of the pill, by the pixels of the screen, and what a screen reader is told.
#include "desktop/pill/PillDesk.h"

#include <gtest/gtest.h>

#include <cstring>

#include <xcb/xcb.h>

namespace lorvane {

namespace {

constexpr std::array<int, 3> green{79, 190, 141};
constexpr std::array<int, 3> amber{240, 173, 66};
constexpr std::array<int, 3> red{245, 78, 98};
constexpr std::array<int, 3> recording{200, 89, 62};

/// A white window behind the pill, which is shown without a compositor here or with one, as the desktop has
/// it.
class PillLook : public ::testing::Test {
 protected:
    QRect area() { return {stage.place(), QSize(440, 90)}; }
    QRect capsuleArea() {
        const QJsonObject state = stage.state();
        return QRectF(state["capsuleX"].toDouble(), state["capsuleY"].toDouble(),
                      state["capsuleWidth"].toDouble(), state["capsuleHeight"].toDouble())
            .toAlignedRect();
    }
    bool shows(const std::array<int, 3>& colour) {
        return waitUntil([&] { return Picture(capsuleArea()).hasNear(colour, 14); });
    }

    OtherWindow ground{QRect(0, 0, 1280, 800), OtherWindow::Kind::fullScreen};
    PillStage stage;
};

TEST_F(PillLook, EachPhaseHasItsWidthOnTheScreen) {
    struct Row {
        const char* line;
        int width;
    };
    for (const Row& row : {Row{"phase idle", 58}, Row{"phase recording", 136}, Row{"phase processing", 136},
                           Row{"phase done", 96}, Row{"notice error Oh no", 220}}) {
        stage.tell(row.line);
        EXPECT_EQ(stage.waitForWidth(row.width), row.width);
        // A compositor adds the shadow, which fades out within 7 points.
        const int shadow = stage.state()["composited"].toBool() ? 14 : 0;
        int seen = 0;
        EXPECT_TRUE(waitUntil([&] {
            seen = Picture(area()).extent(75);
            return seen >= row.width - 2 && seen <= row.width + shadow + 2;
        })) << row.line
            << ": " << seen;
    }
}

TEST_F(PillLook, EachPhaseHasItsAccent) {
    stage.tell("phase recording");
    EXPECT_TRUE(shows(recording));
    stage.tell("phase done");
    EXPECT_TRUE(shows(green));
    stage.tell("notice warning Didn't catch that");
    EXPECT_TRUE(shows(amber));
    stage.tell("notice error Oh no");
    EXPECT_TRUE(shows(red));
    stage.tell("phase idle");
    EXPECT_EQ(stage.waitForWidth(58), 58);
    const Picture resting(capsuleArea());
    for (const auto& accent : {recording, green, amber, red}) {
        EXPECT_FALSE(resting.hasNear(accent, 14));
    }
}

TEST_F(PillLook, AVoiceMovesTheWaveAndSilenceLeavesItFlat) {
    stage.tell("phase recording");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    const auto changes = [this] {
        const Picture first(capsuleArea());
        return waitUntil([&] { return !(Picture(capsuleArea()) == first); }, std::chrono::milliseconds(1500));
    };
    // The content has faded in by the time that two pictures are alike.
    EXPECT_TRUE(waitUntil([&] { return Picture(capsuleArea()) == Picture(capsuleArea()); }));
    EXPECT_FALSE(changes());
    stage.tell("level 0.9");
    EXPECT_TRUE(changes());
    stage.tell("level 0");
    EXPECT_TRUE(waitUntil([&] { return Picture(capsuleArea()) == Picture(capsuleArea()); }));
    EXPECT_FALSE(changes());
}

TEST_F(PillLook, NothingMovesAtRest) {
    EXPECT_EQ(stage.waitForWidth(58), 58);
    EXPECT_TRUE(waitUntil([this] { return !stage.state()["moving"].toBool(); }));
    stage.tell("phase done");
    EXPECT_TRUE(waitUntil([this] { return !stage.state()["moving"].toBool(); }));
    stage.tell("phase processing");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    EXPECT_TRUE(stage.state()["moving"].toBool());
}

TEST_F(PillLook, WithLessMotionSizesAreThereAtOnceAndTheSpinnerStands) {
    stage.tell("calm on");
    stage.tell("phase processing");
    const QJsonObject state = stage.state();
    EXPECT_EQ(state["capsuleWidth"].toDouble(), 136);
    EXPECT_FALSE(state["moving"].toBool());
}

TEST_F(PillLook, MoreContrastMakesItBlackAndWhite) {
    EXPECT_EQ(stage.waitForWidth(58), 58);
    EXPECT_TRUE(waitUntil([this] {
        return !Picture(capsuleArea().adjusted(8, 3, -8, -3)).hasNear({255, 255, 255}, 1);
    }));
    stage.tell("contrast on");
    EXPECT_TRUE(waitUntil([this] {
        const Picture seen(capsuleArea().adjusted(8, 3, -8, -3));
        return seen.hasNear({255, 255, 255}, 1) && seen.hasNear({0, 0, 0}, 1);
    }));
}

/// Says that it puts the windows together, and does nothing of the kind.
class CompositorClaim {
 public:
    CompositorClaim() {
        const auto* const name = "_NET_WM_CM_S0";
        auto* const atom = xcb_intern_atom_reply(
            xcb_, xcb_intern_atom(xcb_, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr);
        const auto* const screen = xcb_setup_roots_iterator(xcb_get_setup(xcb_)).data;
        const xcb_window_t window = xcb_generate_id(xcb_);
        xcb_create_window(xcb_, XCB_COPY_FROM_PARENT, window, screen->root, -9, -9, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
        xcb_set_selection_owner(xcb_, window, atom->atom, XCB_CURRENT_TIME);
        xcb_flush(xcb_);
        std::free(atom);
    }
    ~CompositorClaim() { xcb_disconnect(xcb_); }
    CompositorClaim(const CompositorClaim&) = delete;
    CompositorClaim& operator=(const CompositorClaim&) = delete;

 private:
    xcb_connection_t* xcb_ = xcb_connect(nullptr, nullptr);
};

TEST_F(PillLook, ItIsCutOutWithoutACompositorAndWholeWithOne) {
    const quint32 window = stage.window();
    if (stage.state()["composited"].toBool()) {
        EXPECT_FALSE(display::isCutOut(window));
        return;
    }
    EXPECT_TRUE(display::isCutOut(window));
    // White right beside the round end, where a window of its own shape would be black.
    EXPECT_EQ(stage.waitForWidth(58), 58);
    EXPECT_EQ(Picture(capsuleArea()).at(0, 0), (std::array<int, 3>{255, 255, 255}));
    auto compositor = std::make_unique<CompositorClaim>();
    EXPECT_TRUE(waitUntil([window] { return !display::isCutOut(window); }));
    compositor.reset();
    EXPECT_TRUE(waitUntil([window] { return display::isCutOut(window); }));
}

/// What the accessibility bus tells of the pill, as a screen reader hears it.
class ScreenReader {
 public:
    ScreenReader(qint64 pid) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start("/usr/bin/python3", {"-I", QStringLiteral(SCREEN_READER), QString::number(pid)});
    }
    ~ScreenReader() {
        process_.closeWriteChannel();
        process_.waitForFinished(5000);
    }
    bool hears(const QByteArray& line) {
        return waitUntil([&] {
            heard_ += process_.readAllStandardOutput();
            return heard_.contains(line + '\n');
        });
    }
    const QByteArray& heard() const { return heard_; }

 private:
    QProcess process_;
    QByteArray heard_;
};

TEST_F(PillLook, AScreenReaderHearsEveryPhase) {
    ScreenReader reader(stage.pid());
    ASSERT_TRUE(reader.hears("listening"));
    struct Row {
        const char* line;
        const char* told;
    };
    for (const Row& row : {Row{"phase recording", "Listening"}, Row{"phase processing", "Cleaning up"},
                           Row{"translating on", "Translating"}, Row{"phase done", "Inserted"},
                           Row{"notice error Oh no", "Oh no"}, Row{"phase idle", "Ready to dictate"}}) {
        stage.tell(row.line);
        EXPECT_TRUE(reader.hears(QByteArray("told: ") + row.told)) << reader.heard().constData();
    }
}

TEST_F(PillLook, AScreenReaderFindsEveryControlByName) {
    mouse::moveTo(stage.place() + QPoint(220, 75));
    EXPECT_EQ(stage.waitForWidth(110), 110);
    ScreenReader reader(stage.pid());
    for (const char* const name :
         {"button: Change language", "button: Dictate — or hold right Ctrl", "button: Translate to"}) {
        EXPECT_TRUE(reader.hears(name)) << reader.heard().constData();
    }
    mouse::moveTo({5, 5});
    stage.tell("phase processing");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    ScreenReader later(stage.pid());
    EXPECT_TRUE(later.hears("button: Cancel")) << later.heard().constData();
}

} // namespace

} // namespace lorvane
