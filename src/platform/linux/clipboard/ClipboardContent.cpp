// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ClipboardContent.h"

#include "platform/linux/clipboard/ContentTypes.h"

#include <algorithm>

namespace lorvane {

using namespace contenttypes;

namespace {

QString usualPropertyType(const QString& type) { return type == text ? utf8 : type; }

bool isLatin1(const QString& string) {
    return std::ranges::all_of(string, [](QChar unit) { return unit.unicode() < 0x100; });
}

bool isWorthKeeping(const TypedBytes& entry) {
    return isContent(entry.type) && (!entry.bytes.isEmpty() || isMarker(entry.type));
}

} // namespace

const TypedBytes* ClipboardContent::find(const QString& type) const {
    const auto found = std::ranges::find(types, type, &TypedBytes::type);
    return found == types.end() ? nullptr : &*found;
}

std::optional<QString> ClipboardContent::text() const {
    for (const auto& type : {utf8, plainUtf8}) {
        if (const auto* entry = find(type)) {
            return QString::fromUtf8(entry->bytes);
        }
    }
    if (const auto* entry = find(latin1)) {
        return QString::fromLatin1(entry->bytes);
    }
    return std::nullopt;
}

ClipboardContent contentOfText(const QString& string) {
    const QByteArray bytes = string.toUtf8();
    ClipboardContent content;
    for (const auto& type : {utf8, plainUtf8, plain, text}) {
        content.types.append({type, bytes, usualPropertyType(type), 8});
    }
    if (isLatin1(string)) {
        content.types.append({latin1, string.toLatin1(), latin1, 8});
    }
    return content;
}

ClipboardContent contentOfBorrowedText(const QString& string) {
    ClipboardContent content = contentOfText(string);
    content.types.append({transientMarker, QByteArray(), transientMarker, 8});
    content.types.append({generatedMarker, QByteArray(), generatedMarker, 8});
    content.types.append({passwordHint, QByteArrayLiteral("secret"), passwordHint, 8});
    return content;
}

PasteboardSnapshot snapshotOf(const ClipboardContent& content) {
    QMap<QString, QByteArray> item;
    for (const auto& entry : content.types) {
        if (isWorthKeeping(entry)) {
            item.insert(entry.type, entry.bytes);
        }
    }
    PasteboardSnapshot snapshot;
    if (!item.isEmpty()) {
        snapshot.items.append(item);
    }
    return snapshot;
}

ClipboardContent contentOfSnapshot(const PasteboardSnapshot& snapshot, const ClipboardContent& form) {
    // X has one item; of several the first that has a type counts.
    QMap<QString, QByteArray> left;
    for (const auto& item : snapshot.items) {
        for (auto it = item.begin(); it != item.end(); ++it) {
            if (!left.contains(it.key())) {
                left.insert(it.key(), it.value());
            }
        }
    }
    ClipboardContent content;
    for (const auto& known : form.types) {
        if (left.contains(known.type)) {
            content.types.append({known.type, left.take(known.type), known.propertyType, known.format});
        }
    }
    for (auto it = left.begin(); it != left.end(); ++it) {
        content.types.append({it.key(), it.value(), usualPropertyType(it.key()), 8});
    }
    return content;
}

ClipboardContent formOf(ClipboardContent content) {
    for (auto& entry : content.types) {
        entry.bytes.clear();
    }
    return content;
}

} // namespace lorvane
