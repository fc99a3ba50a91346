// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionFacts.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

struct Row {
    const char* name;
    SessionFacts facts;
    SessionChoice choice;
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

SessionFacts x11() {
    SessionFacts facts;
    facts.hasX = true;
    return facts;
}

SessionFacts wayland(const QList<QByteArray>& globals) {
    SessionFacts facts;
    facts.hasCompositor = true;
    facts.hasWaylandPlugin = true;
    facts.globals = {{"wl_seat", 7}, {"wl_shm", 1}, {"wl_compositor", 4}};
    for (const QByteArray& global : globals) {
        facts.globals.insert(global, 1);
    }
    return facts;
}

SessionFacts withXWayland(SessionFacts facts) {
    facts.hasX = true;
    return facts;
}

SessionFacts withoutPlugin(SessionFacts facts) {
    facts.hasWaylandPlugin = false;
    return facts;
}

SessionFacts withoutSeat(SessionFacts facts) {
    facts.globals.remove("wl_seat");
    return facts;
}

SessionFacts chosen(SessionFacts facts, const char* platform) {
    facts.chosenQtPlatform = QLatin1String(platform);
    return facts;
}

const QList<QByteArray> ofWlroots{"zwlr_data_control_manager_v1", "zwlr_layer_shell_v1",
                                  "zwp_virtual_keyboard_manager_v1"};
const QList<QByteArray> ofKWin{"zwlr_data_control_manager_v1", "zwlr_layer_shell_v1",
                               "org_kde_kwin_fake_input"};
const QList<QByteArray> ofMutter{"gtk_shell1"};
const QList<QByteArray> ofNewer{"ext_data_control_manager_v1", "zwlr_layer_shell_v1"};

class SessionChoiceTest : public ::testing::TestWithParam<Row> {};

TEST_P(SessionChoiceTest, FollowsWhatIsThere) {
    const SessionChoice choice = chooseSession(GetParam().facts);
    EXPECT_EQ(choice.windowing, GetParam().choice.windowing);
    EXPECT_EQ(choice.platform, GetParam().choice.platform);
    EXPECT_EQ(choice.pill, GetParam().choice.pill);
    EXPECT_EQ(choice.clipboard, GetParam().choice.clipboard);
}

INSTANTIATE_TEST_SUITE_P(
    Sessions, SessionChoiceTest,
    ::testing::Values(
        Row{"nothing at all", {}, {}},
        Row{"X11", x11(), {Windowing::x11, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::xSelection}},
        Row{"wlroots with XWayland",
            withXWayland(wayland(ofWlroots)),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::dataControl}},
        Row{"wlroots without XWayland",
            wayland(ofWlroots),
            {Windowing::wayland, QtPlatform::wayland, PillRoad::layerShell, ClipboardRoad::dataControl}},
        Row{"wlroots without XWayland and without Qt's plugin",
            withoutPlugin(wayland(ofWlroots)),
            {Windowing::wayland, QtPlatform::offscreen, PillRoad::layerShell, ClipboardRoad::dataControl}},
        Row{"KWin with XWayland",
            withXWayland(wayland(ofKWin)),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::dataControl}},
        Row{"Mutter with XWayland: the clipboard goes by X",
            withXWayland(wayland(ofMutter)),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::xSelection}},
        Row{"Mutter without XWayland",
            wayland(ofMutter),
            {Windowing::wayland, QtPlatform::wayland, PillRoad::none, ClipboardRoad::none}},
        Row{"the newer clipboard protocol alone",
            withXWayland(wayland(ofNewer)),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::dataControl}},
        Row{"data control needs a seat",
            withoutSeat(withXWayland(wayland(ofWlroots))),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::xSelection}},
        Row{"the user wants Qt by Wayland",
            chosen(withXWayland(wayland(ofWlroots)), "wayland"),
            {Windowing::wayland, QtPlatform::wayland, PillRoad::layerShell, ClipboardRoad::dataControl}},
        Row{"the user's list of platforms begins with Wayland",
            chosen(withXWayland(wayland(ofMutter)), "wayland;xcb"),
            {Windowing::wayland, QtPlatform::wayland, PillRoad::none, ClipboardRoad::xSelection}},
        Row{"Wayland wanted without its plugin",
            withoutPlugin(chosen(withXWayland(wayland(ofWlroots)), "wayland")),
            {Windowing::wayland, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::dataControl}},
        Row{"Wayland wanted in an X11 session",
            chosen(x11(), "wayland"),
            {Windowing::x11, QtPlatform::xcb, PillRoad::xWindow, ClipboardRoad::xSelection}},
        Row{"xcb wanted where there is no X display",
            chosen(wayland(ofWlroots), "xcb"),
            {Windowing::wayland, QtPlatform::wayland, PillRoad::layerShell, ClipboardRoad::dataControl}}));

} // namespace

} // namespace lorvane
