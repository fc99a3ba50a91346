// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/PasteChord.h"

#include "platform/linux/x11/test/Keymaps.h"

namespace lorvane {

namespace {

constexpr XKeyCode control = 37;
constexpr XKeyCode shift = 50;
constexpr XKeyCode insert = 118;
constexpr XKeyCode v = 55;

Chord chord(const char* layouts, const char* variants, xkb_layout_index_t group,
            PasteRoute route = PasteRoute::standard, const char* options = "") {
    const XkbKeymap keymap = keymapOf(layouts, variants, options);
    return pasteChord(keymap.get(), group, route);
}

TEST(PasteChord, ControlAndTheKeyOfV) { EXPECT_EQ(chord("us", "", 0), (Chord{control, v})); }

TEST(PasteChord, SecondGroupOfAnotherScriptNeedsNoSwitch) {
    for (const char* const layouts : {"us,ru", "us,gr", "us,il"}) {
        EXPECT_EQ(chord(layouts, "", 0), (Chord{control, v})) << layouts;
        EXPECT_EQ(chord(layouts, "", 1), (Chord{control, v})) << layouts;
    }
    EXPECT_EQ(chord("ru,us", "", 0), (Chord{control, v}));
}

TEST(PasteChord, DvorakHasItsVElsewhere) {
    constexpr XKeyCode dvorakV = 60;
    EXPECT_EQ(chord("us", "dvorak", 0), (Chord{control, dvorakV}));
}

TEST(PasteChord, GroupInForceDecidesAmongLatinLayouts) {
    constexpr XKeyCode dvorakV = 60;
    EXPECT_EQ(chord("us,us", ",dvorak", 0), (Chord{control, v}));
    EXPECT_EQ(chord("us,us", ",dvorak", 1), (Chord{control, dvorakV}));
}

TEST(PasteChord, LayoutWithoutVInsertsByShift) {
    EXPECT_EQ(chord("ru", "", 0), (Chord{shift, insert}));
    EXPECT_EQ(chord("ru", "", 0, PasteRoute::terminal), (Chord{shift, insert}));
}

TEST(PasteChord, TerminalsTakeControlShiftV) {
    EXPECT_EQ(chord("us", "", 0, PasteRoute::terminal), (Chord{control, shift, v}));
    EXPECT_EQ(chord("us,ru", "", 1, PasteRoute::terminal), (Chord{control, shift, v}));
}

TEST(PasteChord, TerminalsOfThePrimarySelectionTakeShiftInsert) {
    EXPECT_EQ(chord("us", "", 0, PasteRoute::primaryTerminal), (Chord{shift, insert}));
}

TEST(PasteChord, ControlIsFoundWhereTheLayoutPutsIt) {
    constexpr XKeyCode capsLock = 66;
    EXPECT_EQ(chord("us", "", 0, PasteRoute::standard, "ctrl:swapcaps"), (Chord{capsLock, v}));
}

} // namespace

} // namespace lorvane
