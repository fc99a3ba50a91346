// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Lorvane

// What stands where nothing is yet.
Column {
    required property string title
    required property string hint

    spacing: 3 * Theme.step

    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: parent.title
        wrapMode: Text.Wrap
        color: Theme.ink
        font { family: Theme.serif; pixelSize: Theme.subheading }
    }
    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: parent.hint
        wrapMode: Text.Wrap
        color: Theme.quiet
        font.pixelSize: Theme.body
    }
}
