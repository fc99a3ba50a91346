// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QString>
#include <QVariant>

#include <optional>

/// The few of IBus' values that are sent or read here, in the shape in which libibus 1.5 writes them
/// (`ibus_serializable_serialize`): a structure of the class's name, attachments, and the fields in order.
namespace lorvane::ibus {

inline const QString service = QStringLiteral("org.freedesktop.IBus");
inline const QString path = QStringLiteral("/org/freedesktop/IBus");
inline const QString factoryPath = QStringLiteral("/org/freedesktop/IBus/Factory");
inline const QString factoryInterface = QStringLiteral("org.freedesktop.IBus.Factory");
inline const QString engineInterface = QStringLiteral("org.freedesktop.IBus.Engine");
inline const QString contextInterface = QStringLiteral("org.freedesktop.IBus.InputContext");

/// IBusText without attributes.
struct Text {
    QString text;
};

/// IBusEngineDesc of an engine that leaves the user's keyboard layout alone.
struct EngineDescription {
    QString name;
    QString longName;
};

/// IBusComponent with one engine, which this very process serves.
struct Component {
    QString name;
    QString description;
    EngineDescription engine;
};

/// `ContentType` of an input context: IBusInputPurpose and IBusInputHints.
struct ContentType {
    uint purpose = 0;
    uint hints = 0;
};

/// Makes the types known to Qt's D-Bus; as often as one likes.
void registerTypes();
/// For an argument of the type variant.
template <typename Value>
[[nodiscard]] QVariant inVariant(const Value& value);
/// The name in an IBusEngineDesc as it was received; absent for anything else.
[[nodiscard]] std::optional<QString> engineName(const QVariant& received);
/// What an IBusText that was received says; absent for anything else.
[[nodiscard]] std::optional<QString> textOf(const QVariant& received);
[[nodiscard]] std::optional<ContentType> contentTypeOf(const QVariant& received);

} // namespace lorvane::ibus

Q_DECLARE_METATYPE(lorvane::ibus::Text)
Q_DECLARE_METATYPE(lorvane::ibus::EngineDescription)
Q_DECLARE_METATYPE(lorvane::ibus::Component)

template <typename Value>
QVariant lorvane::ibus::inVariant(const Value& value) {
    return QVariant::fromValue(QDBusVariant(QVariant::fromValue(value)));
}
