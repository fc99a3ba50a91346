// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ControlService.h"

#include "app/ControlNames.h"

#include <QDBusMessage>

namespace lorvane {

namespace {

QString nameOf(const Phase& phase) {
    struct Names {
        QString operator()(const Idle&) const { return QStringLiteral("idle"); }
        QString operator()(const Recording&) const { return QStringLiteral("recording"); }
        QString operator()(const Processing&) const { return QStringLiteral("processing"); }
        QString operator()(const Done&) const { return QStringLiteral("done"); }
        QString operator()(const Notice&) const { return QStringLiteral("notice"); }
    };
    return std::visit(Names(), phase);
}

} // namespace

ControlService::ControlService(QObject* parent, DictationController& controller, QDBusConnection bus,
                               Ends ends)
    : QDBusAbstractAdaptor(parent), controller_(controller), bus_(std::move(bus)), ends_(std::move(ends)) {
    subscriptions_.push_back(controller_.subscribePhase([this](const Phase&) {
        announce({{QStringLiteral("Phase"), phaseName()},
                  {QStringLiteral("Notice"), notice()},
                  {QStringLiteral("Severity"), severity()}});
    }));
    subscriptions_.push_back(controller_.subscribePermissionsGranted([this](const bool& granted) {
        announce({{QStringLiteral("PermissionsGranted"), granted}});
    }));
}

QString ControlService::phaseName() const { return nameOf(controller_.phase()); }

QString ControlService::notice() const {
    const auto* const notice = std::get_if<Notice>(&controller_.phase());
    return notice == nullptr ? QString() : notice->text;
}

QString ControlService::severity() const {
    const auto* const notice = std::get_if<Notice>(&controller_.phase());
    if (notice == nullptr) {
        return {};
    }
    return notice->severity == NoticeSeverity::warning ? QStringLiteral("warning") : QStringLiteral("error");
}

bool ControlService::permissionsGranted() const { return controller_.permissionsGranted(); }

void ControlService::Start() {
    if (std::holds_alternative<Idle>(controller_.phase()) ||
        std::holds_alternative<Done>(controller_.phase())) {
        controller_.startDictation(Source::toggle);
    }
}

void ControlService::Stop() { controller_.stopDictation(); }

void ControlService::Toggle() {
    if (std::holds_alternative<Recording>(controller_.phase())) {
        Stop();
    } else {
        Start();
    }
}

void ControlService::Cancel() {
    if (std::holds_alternative<Recording>(controller_.phase())) {
        controller_.cancelRecording();
    } else if (std::holds_alternative<Processing>(controller_.phase())) {
        controller_.cancelProcessing();
    }
}

void ControlService::Open() { controller_.openHomeWindow(); }

// The answer to either call goes out before the program ends.
void ControlService::Quit() { QMetaObject::invokeMethod(this, ends_.quit, Qt::QueuedConnection); }

void ControlService::Restart() { QMetaObject::invokeMethod(this, ends_.restart, Qt::QueuedConnection); }

void ControlService::announce(const QVariantMap& changed) {
    auto signal =
        QDBusMessage::createSignal(control::objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << control::interfaceName << changed << QStringList();
    bus_.send(signal);
}

} // namespace lorvane
