// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusValues.h"

#include <QDBusMetaType>
#include <QVariantMap>

namespace lorvane::ibus {

namespace {

struct AttributeList {};

/// Opens the structure of a class and leaves it open.
void begin(QDBusArgument& out, const char* className) {
    out.beginStructure();
    out << QString::fromLatin1(className) << QVariantMap();
}

void writeEmptyArray(QDBusArgument& out) {
    out.beginArray(QMetaType::fromType<QDBusVariant>());
    out.endArray();
}

/// The text behind class name and attachments; absent when it is not of that class.
std::optional<QString> firstText(const QVariant& received, const char* className) {
    QVariant value = received;
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto in = value.value<QDBusArgument>();
    if (!in.currentSignature().startsWith(QLatin1String("(sa{sv}s"))) {
        return std::nullopt;
    }
    QString name;
    QVariantMap attachments;
    QString text;
    in.beginStructure();
    in >> name >> attachments >> text;
    // Qt loses memory where a structure is left before its end.
    while (!in.atEnd()) {
        in.asVariant();
    }
    in.endStructure();
    return name == QLatin1String(className) ? std::optional(text) : std::nullopt;
}

QDBusArgument& operator<<(QDBusArgument& out, const AttributeList& /*list*/) {
    begin(out, "IBusAttrList");
    writeEmptyArray(out);
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, AttributeList& /*list*/) { return in; }

} // namespace

// Nothing is read by these: what comes in is looked at piece by piece, since it may be anything.
const QDBusArgument& operator>>(const QDBusArgument& in, Text& /*text*/) { return in; }
const QDBusArgument& operator>>(const QDBusArgument& in, EngineDescription& /*engine*/) { return in; }
const QDBusArgument& operator>>(const QDBusArgument& in, Component& /*component*/) { return in; }

QDBusArgument& operator<<(QDBusArgument& out, const Text& text) {
    begin(out, "IBusText");
    out << text.text << QDBusVariant(QVariant::fromValue(AttributeList()));
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const EngineDescription& engine) {
    const QString none;
    const uint lowestRank = 0;
    begin(out, "IBusEngineDesc");
    out << engine.name << engine.longName << none << QStringLiteral("other") << QStringLiteral("GPL") << none
        << QStringLiteral("com.ostrand.tirra") << QStringLiteral("default") << lowestRank;
    // Hotkeys, symbol, setup, variant and option of the layout, version, text domain, icon property.
    for (int field = 0; field < 8; ++field) {
        out << none;
    }
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const Component& component) {
    const QString none;
    begin(out, "IBusComponent");
    // Version, licence, author, home page, command, text domain behind the description.
    out << component.name << component.description << none << QStringLiteral("GPL") << none << none << none
        << none;
    writeEmptyArray(out);
    out.beginArray(QMetaType::fromType<QDBusVariant>());
    out << QDBusVariant(QVariant::fromValue(component.engine));
    out.endArray();
    out.endStructure();
    return out;
}

void registerTypes() {
    qDBusRegisterMetaType<AttributeList>();
    qDBusRegisterMetaType<Text>();
    qDBusRegisterMetaType<EngineDescription>();
    qDBusRegisterMetaType<Component>();
}

std::optional<QString> engineName(const QVariant& received) { return firstText(received, "IBusEngineDesc"); }

std::optional<QString> textOf(const QVariant& received) { return firstText(received, "IBusText"); }

std::optional<ContentType> contentTypeOf(const QVariant& received) {
    if (received.metaType() != QMetaType::fromType<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto in = received.value<QDBusArgument>();
    if (in.currentSignature() != QLatin1String("(uu)")) {
        return std::nullopt;
    }
    ContentType type;
    in.beginStructure();
    in >> type.purpose >> type.hints;
    in.endStructure();
    return type;
}

} // namespace lorvane::ibus
