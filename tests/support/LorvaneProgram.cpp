// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LorvaneProgram.h"

#include "support/SessionBus.h"
#include "support/UserSession.h"

#include <QDBusConnection>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include <stdexcept>

namespace lorvane {

namespace {

const QString service = QStringLiteral("com.ostrand.tirra");
const QString object = QStringLiteral("/com/ostrand/tirra");
const QString interface = QStringLiteral("com.ostrand.tirra.Dictation1");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace

// Follows the phase by the change signals, so that no short phase is missed.
class LorvaneProgram::PhaseRecorder : public QObject {
    Q_OBJECT
 public:
    PhaseRecorder(QStringList& phases, std::chrono::steady_clock::time_point& at) : phases_(phases), at_(at) {
        QDBusConnection::sessionBus().connect(service, object, propertiesInterface,
                                              QStringLiteral("PropertiesChanged"), this,
                                              SLOT(changed(QString, QVariantMap, QStringList)));
    }

 public Q_SLOTS:
    void changed(const QString& which, const QVariantMap& values, const QStringList&) {
        if (which != interface || !values.contains(QStringLiteral("Phase"))) {
            return;
        }
        const QString notice = values.value(QStringLiteral("Notice")).toString();
        const QString phase = values.value(QStringLiteral("Phase")).toString();
        at_ = std::chrono::steady_clock::now();
        phases_.append(notice.isEmpty() ? phase : phase + QStringLiteral(": ") + notice);
    }

 private:
    QStringList& phases_;
    std::chrono::steady_clock::time_point& at_;
};

LorvaneProgram::LorvaneProgram(const QString& backend, const QJsonObject& preferences)
    : environment_(QProcessEnvironment::systemEnvironment()),
      recorder_(std::make_unique<PhaseRecorder>(phases_, lastPhaseAt_)) {
    session::beSetUp();
    environment_.insert(QStringLiteral("XDG_CONFIG_HOME"), home_.filePath(QStringLiteral("config")));
    environment_.insert(QStringLiteral("XDG_DATA_HOME"), home_.filePath(QStringLiteral("data")));
    environment_.insert(QStringLiteral("XDG_STATE_HOME"), home_.filePath(QStringLiteral("state")));
    environment_.remove(QStringLiteral("LORVANE_BACKEND_URL"));
    if (!backend.isEmpty()) {
        environment_.insert(QStringLiteral("LORVANE_BACKEND_URL"), backend);
    }
    QJsonObject stored = preferences;
    const QString onboarded = QStringLiteral("tirra.mac.onboarded");
    stored.insert(onboarded, stored.value(onboarded).toBool(true));
    QDir().mkpath(home_.filePath(QStringLiteral("config/Tirra")));
    QFile file(preferencesFile());
    if (!file.open(QIODevice::WriteOnly)) {
        throw std::runtime_error("the preferences cannot be written");
    }
    file.write(QJsonDocument(stored).toJson());
    file.close();
    process_.setProcessEnvironment(environment_);
    process_.setProcessChannelMode(QProcess::MergedChannels);
    start();
}

void LorvaneProgram::start() {
    process_.start(QStringLiteral(LORVANE_PROGRAM), QStringList());
    const bool ready =
        process_.waitForStarted() && waitUntil([this] {
            return !isRunning() || property(QStringLiteral("PermissionsGranted")) == QLatin1String("true");
        });
    if (!ready || !isRunning()) {
        throw std::runtime_error("lorvane did not come up: " + process_.readAll().toStdString());
    }
    waitForKeys();
}

// A compositor is asked for the keys and answers a moment later.
void LorvaneProgram::waitForKeys() const {
    if (session::isWayland() && !waitUntil([this] { return log().contains(QLatin1String(" comes by ")); })) {
        throw std::runtime_error("lorvane hears no key: " + log().toStdString());
    }
}

LorvaneProgram::~LorvaneProgram() { end(); }

void LorvaneProgram::end() {
    if (!isRunning()) {
        return;
    }
    process_.terminate();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished(5000);
    }
}

void LorvaneProgram::restart() {
    end();
    forgetPhases();
    start();
}

QString LorvaneProgram::property(const QString& name) const {
    auto call = QDBusMessage::createMethodCall(service, object, propertiesInterface, QStringLiteral("Get"));
    call << interface << name;
    const QDBusReply<QVariant> reply(askOnSessionBus(call, std::chrono::seconds(3)));
    return reply.isValid() ? reply.value().toString() : QString();
}

bool LorvaneProgram::waitForPhase(const QString& wanted, std::chrono::milliseconds bound) const {
    return waitUntil([&] { return phase() == wanted; }, bound);
}

bool LorvaneProgram::waitForPhases(const QStringList& wanted, std::chrono::milliseconds bound) const {
    return waitUntil([&] { return phases_ == wanted; }, bound);
}

void LorvaneProgram::forgetPhases() { phases_.clear(); }

QString LorvaneProgram::log() const {
    QFile file(home_.filePath(QStringLiteral("state/Logs/Tirra/tirra.log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString LorvaneProgram::output() { return QString::fromUtf8(output_ += process_.readAll()); }

QString LorvaneProgram::preferencesFile() const {
    return home_.filePath(QStringLiteral("config/Tirra/preferences.json"));
}

QString LorvaneProgram::historyFile() const {
    return home_.filePath(QStringLiteral("data/Tirra/tirra-history.json"));
}

int LorvaneProgram::run(const QStringList& arguments, QByteArray* output) const {
    QProcess command;
    command.setProcessEnvironment(environment_);
    command.start(QStringLiteral(LORVANE_PROGRAM), arguments);
    if (!command.waitForFinished(20000)) {
        return -1;
    }
    if (output != nullptr) {
        *output = command.readAllStandardOutput() + command.readAllStandardError();
    }
    return command.exitCode();
}

void LorvaneProgram::kill() {
    process_.kill();
    process_.waitForFinished(5000);
}

} // namespace lorvane

#include "LorvaneProgram.moc"
