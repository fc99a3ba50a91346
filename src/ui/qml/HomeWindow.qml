// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtQuick.Window
import Lorvane
import "pages"

Window {
    id: window

    required property HomeModel model
    required property Appearance appearance

    title: "Lorvane"
    width: 1200
    height: 780
    minimumWidth: 1120
    minimumHeight: 720
    color: Theme.paper

    Binding {
        target: Theme
        property: "dark"
        value: window.appearance.dark
    }
    Shortcut {
        sequences: [StandardKey.Close]
        onActivated: window.close()
    }
    RecentPage {
        anchors.fill: parent
        model: window.model
        focus: true
    }
}
