// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ContentTypes.h"

#include <QSet>

namespace lorvane::contenttypes {

namespace {

const QSet<QString>& notContent() {
    static const QSet<QString> names = {
        // questions and orders
        "TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INCR", "ATOM", "ATOM_PAIR",
        // about the owner or the place that was selected
        "CHARACTER_POSITION", "CLASS", "CLIENT_WINDOW", "COLUMN_NUMBER", "HOST_NAME", "HOSTNAME", "LENGTH",
        "LINE_NUMBER", "LIST_LENGTH", "MODULE", "NAME", "OWNER_OS", "PROCEDURE", "PROCESS", "SPAN", "TASK",
        "USER",
        // handles that end with the owner
        "BACKGROUND", "BITMAP", "COLORMAP", "DRAWABLE", "FONT", "FOREGROUND", "PIXMAP", "WINDOW",
        // Qt's own word for "some image"; it stands for the image types beside it
        "application/x-qt-image"};
    return names;
}

} // namespace

bool isContent(const QString& type) {
    // GTK_TEXT_BUFFER_CONTENTS and its like are addresses in the owner's memory.
    return !type.isEmpty() && !notContent().contains(type) && !type.startsWith(u"INSERT_") &&
           !type.startsWith(u"GTK_") && !type.startsWith(u"LORVANE_");
}

bool isMarker(const QString& type) {
    return type == transientMarker || type == generatedMarker || type == passwordHint;
}

bool isText(const QString& type) {
    return type == utf8 || type == plainUtf8 || type == plain || type == text || type == latin1;
}

} // namespace lorvane::contenttypes
