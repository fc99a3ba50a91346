// SPDX-License-Identifier: GPL-3.0-or-later
// The look of every window: colours, type, spacing. The pill has the same values in C++.
pragma Singleton
import QtQuick

QtObject {
    property bool dark: false

    readonly property color paper: dark ? "#1b1710" : "#fbf8f2"
    readonly property color card: dark ? "#262118" : "#ffffff"
    readonly property color ink: dark ? "#f4efe6" : "#211e19"
    readonly property color quiet: dark ? "#b9b0a1" : "#6b6459"
    readonly property color line: dark ? "#3a3327" : "#e6dfd2"
    readonly property color accent: dark ? "#e8836d" : "#b4472f"

    readonly property int step: 4
    readonly property int smallRadius: 8
    readonly property int radius: 14

    readonly property int body: 15
    readonly property int small: 13
    readonly property int heading: 30
    readonly property int subheading: 20

    readonly property string serif: firstOf(["Georgia", "Noto Serif", "DejaVu Serif"])

    function firstOf(families) {
        const present = Qt.fontFamilies()
        return families.find(family => present.includes(family)) ?? "serif"
    }
}
