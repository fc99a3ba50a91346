// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiReply.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace lorvane {

namespace {

bool isArray(const QVariant& value, QLatin1String signature) {
    return value.metaType() == QMetaType::fromType<QDBusArgument>() &&
           value.value<QDBusArgument>().currentSignature() == signature;
}

} // namespace

QVariant AtspiReply::first() const {
    if (!answered() || values_.isEmpty()) {
        return {};
    }
    const QVariant value = values_.first();
    return value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant()
                                                                   : value;
}

std::optional<QString> AtspiReply::text() const {
    const QVariant value = first();
    if (value.typeId() != QMetaType::QString) {
        return std::nullopt;
    }
    return value.toString();
}

std::optional<qint64> AtspiReply::number() const {
    const QVariant value = first();
    bool isNumber = false;
    const qint64 number = value.toLongLong(&isNumber);
    if (!isNumber || value.typeId() == QMetaType::QString) {
        return std::nullopt;
    }
    return number;
}

std::optional<AccessibleStates> AtspiReply::states() const {
    const QVariant value = first();
    if (!isArray(value, QLatin1String("au"))) {
        return std::nullopt;
    }
    const auto words = qdbus_cast<QList<uint>>(value);
    std::uint64_t bits = 0;
    for (qsizetype i = 0; i < words.size() && i < 2; ++i) {
        bits |= static_cast<std::uint64_t>(words[i]) << (32 * i);
    }
    return AccessibleStates(bits);
}

std::optional<QStringList> AtspiReply::names() const {
    const QVariant value = first();
    if (value.typeId() != QMetaType::QStringList) {
        return std::nullopt;
    }
    return value.toStringList();
}

std::optional<std::vector<AccessibleRef>> AtspiReply::objects() const {
    const QVariant value = first();
    if (!isArray(value, QLatin1String("a(so)"))) {
        return std::nullopt;
    }
    std::vector<AccessibleRef> found;
    const auto array = value.value<QDBusArgument>();
    array.beginArray();
    while (!array.atEnd()) {
        AccessibleRef object;
        QDBusObjectPath path;
        array.beginStructure();
        array >> object.bus >> path;
        array.endStructure();
        object.path = path.path();
        if (!object.isNull()) {
            found.push_back(std::move(object));
        }
    }
    array.endArray();
    return found;
}

} // namespace lorvane
