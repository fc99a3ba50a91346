// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtQuick.Controls.Basic
import Lorvane
import "../components"

// The dictations of late, newest first.
FocusScope {
    id: page

    required property HomeModel model

    Text {
        id: title

        anchors { left: list.left; top: parent.top; topMargin: 10 * Theme.step }
        text: page.model.title
        color: Theme.ink
        font { family: Theme.serif; pixelSize: Theme.heading }
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    ListView {
        id: list

        anchors { top: title.bottom; topMargin: 6 * Theme.step; bottom: parent.bottom }
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width - 16 * Theme.step, 800)
        model: page.model
        spacing: 3 * Theme.step
        bottomMargin: 10 * Theme.step
        clip: true
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        visible: count > 0
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

        Accessible.role: Accessible.List
        Accessible.name: page.model.title
        Accessible.focusable: true

        delegate: DictationCard {
            required property int index

            width: ListView.view.width
            current: ListView.isCurrentItem && list.activeFocus
            TapHandler {
                onTapped: {
                    list.forceActiveFocus()
                    list.currentIndex = index
                }
            }
        }
    }

    EmptyState {
        anchors.centerIn: parent
        width: 480
        visible: list.count === 0
        title: page.model.emptyTitle
        hint: page.model.emptyHint
    }
}
