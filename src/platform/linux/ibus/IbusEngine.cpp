// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusEngine.h"

#include "platform/linux/ibus/IbusValues.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusObjectPath>

namespace lorvane {

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
/// The daemon's stand-in for a focus that no application has.
const QString noClient = QStringLiteral("fake");
// IBusInputPurpose.
constexpr uint passwordPurpose = 8;
constexpr uint pinPurpose = 9;

} // namespace

const QString IbusEngine::name = QStringLiteral("lorvane");

bool IbusEngine::isSecret() const { return purpose_ == passwordPurpose || purpose_ == pinPurpose; }

QDBusMessage IbusEngine::commit(const QString& text) const {
    auto signal = QDBusMessage::createSignal(path_, ibus::engineInterface, QStringLiteral("CommitText"));
    signal << ibus::inVariant(ibus::Text{text});
    return signal;
}

void IbusEngine::forget() {
    path_.clear();
    purpose_.reset();
    hasFocus_ = false;
}

// The daemon does not ask.
QString IbusEngine::introspect(const QString& /*path*/) const { return {}; }

bool IbusEngine::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.type() != QDBusMessage::MethodCallMessage) {
        return false;
    }
    const QDBusMessage answer = answerTo(message);
    if (message.isReplyRequired()) {
        connection.send(answer);
    }
    return true;
}

QDBusMessage IbusEngine::answerTo(const QDBusMessage& call) {
    if (call.interface() == ibus::factoryInterface) {
        return create(call);
    }
    if (call.path() != path_) {
        return call.createErrorReply(QDBusError::UnknownObject, QStringLiteral("no such engine"));
    }
    if (call.interface() == propertiesInterface) {
        return answerAboutProperty(call);
    }
    if (call.member() == QLatin1String("ProcessKeyEvent")) {
        return call.createReply(false);
    }
    noticeCall(call);
    return call.createReply();
}

QDBusMessage IbusEngine::create(const QDBusMessage& call) {
    if (call.arguments().value(0).toString() != name) {
        return call.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("no such engine"));
    }
    forget();
    path_ = ibus::path + QStringLiteral("/Engine/lorvane/%1").arg(++made_);
    return call.createReply(QVariant::fromValue(QDBusObjectPath(path_)));
}

QDBusMessage IbusEngine::answerAboutProperty(const QDBusMessage& call) {
    const QVariantList arguments = call.arguments();
    const QString property = arguments.value(1).toString();
    // By the client's name the focus is told from the daemon's stand-in.
    const QVariantMap properties{{QStringLiteral("FocusId"), true},
                                 {QStringLiteral("ActiveSurroundingText"), false}};
    if (call.member() == QLatin1String("GetAll")) {
        return call.createReply(properties);
    }
    if (call.member() == QLatin1String("Get")) {
        return call.createReply(QVariant::fromValue(QDBusVariant(properties.value(property, false))));
    }
    if (call.member() == QLatin1String("Set") && property == QLatin1String("ContentType")) {
        const auto type = ibus::contentTypeOf(arguments.value(2).value<QDBusVariant>().variant());
        purpose_ = type ? type->purpose : 0;
    }
    return call.createReply();
}

void IbusEngine::noticeCall(const QDBusMessage& call) {
    const QString member = call.member();
    if (member == QLatin1String("FocusInId")) {
        hasFocus_ = call.arguments().value(1).toString() != noClient;
    } else if (member == QLatin1String("FocusIn")) {
        hasFocus_ = true;
    } else if (member == QLatin1String("Destroy")) {
        forget();
    } else if (member == QLatin1String("FocusOut") || member == QLatin1String("FocusOutId") ||
               member == QLatin1String("Disable")) {
        hasFocus_ = false;
    }
}

} // namespace lorvane
