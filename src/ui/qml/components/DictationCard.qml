// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Lorvane

// One dictation in a list: its text and when it was spoken.
Rectangle {
    id: card

    required property string text
    required property string when
    required property bool current

    implicitHeight: column.implicitHeight + 8 * Theme.step
    radius: Theme.radius
    color: Theme.card
    border.width: current ? 2 : 1
    border.color: current ? Theme.accent : Theme.line

    Accessible.role: Accessible.ListItem
    Accessible.name: card.text
    Accessible.description: card.when
    Accessible.focusable: true
    Accessible.focused: current

    Column {
        id: column

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 4 * Theme.step }
        spacing: 2 * Theme.step

        Text {
            width: parent.width
            text: card.when
            color: Theme.quiet
            font.pixelSize: Theme.small
            Accessible.ignored: true
        }
        Text {
            width: parent.width
            text: card.text
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 6
            elide: Text.ElideRight
            lineHeight: 1.25
            color: Theme.ink
            font.pixelSize: Theme.body
            Accessible.ignored: true
        }
    }
}
