// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ContentTypes.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

TEST(ContentTypes, QuestionsAndOrdersOfTheProtocolAreNoContent) {
    for (const auto* name : {"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION",
                             "INSERT_PROPERTY", "INCR", ""}) {
        EXPECT_FALSE(contenttypes::isContent(QString::fromLatin1(name))) << name;
    }
}

TEST(ContentTypes, WhatAToolkitInventsOrKeepsInItsOwnMemoryIsNoContent) {
    for (const auto* name : {"application/x-qt-image", "GTK_TEXT_BUFFER_CONTENTS", "GTK_TREE_MODEL_ROW",
                             "PIXMAP", "BITMAP", "DRAWABLE", "LORVANE_READ"}) {
        EXPECT_FALSE(contenttypes::isContent(QString::fromLatin1(name))) << name;
    }
}

TEST(ContentTypes, WhatProgramsPutOnTheClipboardIsContent) {
    for (const auto* name : {"UTF8_STRING", "STRING", "TEXT", "COMPOUND_TEXT", "text/plain", "text/html",
                             "image/png", "image/x-bmp", "x-special/gnome-copied-files", "text/uri-list",
                             "chromium/x-web-custom-data", "application/x-gtk-text-buffer-rich-text",
                             "x-kde-passwordManagerHint", "org.nspasteboard.TransientType"}) {
        EXPECT_TRUE(contenttypes::isContent(QString::fromLatin1(name))) << name;
    }
}

} // namespace
} // namespace lorvane
