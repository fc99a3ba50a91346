// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Pasteboard.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace lorvane {

/// One type of a selection's content, in the form in which it goes over the wire. Bytes are shared, not
/// copied.
struct TypedBytes {
    QString type;
    QByteArray bytes;
    /// The type that the property itself carries: mostly `type`, but UTF8_STRING for TEXT, for instance.
    QString propertyType;
    /// 8, 16 or 32: the unit of the property. Units of 16 and 32 are in this machine's byte order.
    int format = 8;

    friend bool operator==(const TypedBytes&, const TypedBytes&) = default;
};

/// What a selection holds, in the order in which its types are offered. A plain value.
struct ClipboardContent {
    QList<TypedBytes> types;

    [[nodiscard]] const TypedBytes* find(const QString& type) const;
    [[nodiscard]] bool isEmpty() const { return types.isEmpty(); }
    /// The text among the types, the best encoding first; nothing when there is none.
    [[nodiscard]] std::optional<QString> text() const;

    friend bool operator==(const ClipboardContent&, const ClipboardContent&) = default;
};

/// A text under every name that programs ask for one. STRING is Latin-1 and left out when the text is not.
[[nodiscard]] ClipboardContent contentOfText(const QString& text);
/// The same with the types that ask clipboard histories to skip it.
[[nodiscard]] ClipboardContent contentOfBorrowedText(const QString& text);

/// The content as a snapshot: names that are no content and types without bytes are left out, markers are
/// not.
[[nodiscard]] PasteboardSnapshot snapshotOf(const ClipboardContent& content);
/// A snapshot to serve again. A snapshot knows neither the order of its types nor what their properties
/// looked like: `form` is the content it was taken from, as far as it is known (its bytes do not matter).
[[nodiscard]] ClipboardContent contentOfSnapshot(const PasteboardSnapshot& snapshot,
                                                 const ClipboardContent& form);
/// The content without its bytes.
[[nodiscard]] ClipboardContent formOf(ClipboardContent content);

} // namespace lorvane
