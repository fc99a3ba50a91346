// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DoctorCommand.h"

#include "app/BackendChoice.h"
#include "app/SessionRoads.h"
#include "app/Stores.h"
#include "app/doctor/AccessibilityProbes.h"
#include "app/doctor/Doctor.h"
#include "base/PreferenceCatalogue.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "platform/linux/pulse/PulseConnection.h"
#include "platform/linux/x11/X11Capabilities.h"
#include "platform/linux/x11/X11WindowList.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QTemporaryDir>

#include <cstdio>

namespace lorvane {

namespace {

constexpr std::chrono::milliseconds soundServerPatience{1000};
constexpr Duration backendPatience = std::chrono::seconds(5);

/// The connections that the probes look through; nothing is changed by any of them.
class Examination {
 public:
    Examination(const Foundation& foundation, const QDBusConnection& session)
        : foundation_(foundation), session_(session), display_(foundation.log),
          capabilities_(capabilitiesOf(display_)), bus_(foundation.clock, session),
          roads_(foundation, session, display_, bus_), sound_(foundation.clock), http_(foundation.clock) {}

    [[nodiscard]] DoctorProbes probes();

 private:
    QCoro::Task<Result<QString, MicrophoneLack>> microphone(TaskScope scope);
    QCoro::Task<bool> keyStore(TaskScope scope);
    QCoro::Task<BackendFacts> backend(TaskScope scope);
    [[nodiscard]] std::vector<OpenWindow> openWindows();

    const Foundation foundation_;
    QDBusConnection session_;
    X11Connection display_;
    X11Capabilities capabilities_;
    AtspiBus bus_;
    SessionRoads roads_;
    PulseConnection sound_;
    QtHttpClient http_;
};

DoctorProbes Examination::probes() {
    DoctorProbes probes;
    probes.sessionBus = [this] { return session_.isConnected(); };
    probes.session = [] {
        return sessionKind(qEnvironmentVariable("XDG_SESSION_TYPE"), qEnvironmentVariable("DISPLAY"),
                           qEnvironmentVariable("WAYLAND_DISPLAY"));
    };
    if (!roads_.isWayland()) {
        probes.keyWatching = [this]() -> std::optional<std::pair<int, int>> {
            const auto version = capabilities_.inputVersion;
            return version.major == 0 ? std::nullopt : std::optional(std::pair(version.major, version.minor));
        };
        probes.syntheticKeys = [this] { return capabilities_.canPostKeys(); };
    }
    probes.roads = [this](TaskScope scope) { return roads_.facts(std::move(scope)); };
    probes.microphone = [this](TaskScope scope) { return microphone(scope); };
    probes.keyStore = [this](TaskScope scope) { return keyStore(scope); };
    probes.backend = [this](TaskScope scope) { return backend(scope); };
    probes.openWindows = [this] { return openWindows(); };
    addAccessibilityProbes(probes, bus_, foundation_.clock, session_);
    addTrayProbe(probes, session_);
    return probes;
}

QCoro::Task<Result<QString, MicrophoneLack>> Examination::microphone(TaskScope) {
    sound_.awaitReady(soundServerPatience);
    const PulseInputs inputs = sound_.inputs();
    if (const PulseSource* const source = defaultSource(inputs)) {
        co_return source->description;
    }
    if (sound_.isRefused()) {
        co_return failure(MicrophoneLack::refused);
    }
    const bool isThere = sound_.state() == PulseConnection::State::ready;
    co_return failure(isThere ? MicrophoneLack::noSource : MicrophoneLack::noServer);
}

QCoro::Task<bool> Examination::keyStore(TaskScope) {
    const auto* const bus = session_.interface();
    if (bus == nullptr) {
        co_return false;
    }
    const QStringList names = bus->registeredServiceNames().value() + bus->activatableServiceNames().value();
    co_return names.contains(QStringLiteral("org.freedesktop.secrets")) ||
        names.contains(QStringLiteral("org.kde.kwalletd5"));
}

// The backend that comes with the program is tried by starting one of it, which leaves nothing behind.
QCoro::Task<BackendFacts> Examination::backend(TaskScope scope) {
    BackendFacts facts;
    facts.address = BackendChoice::configured(foundation_.preferences);
    const bool isOwn = facts.address.isEmpty();
    const QTemporaryDir folder;
    std::unique_ptr<BundledBackend> own;
    if (isOwn) {
        const Completion<QString> address;
        // Answered after the child's own signal, since what follows may end the child.
        const auto answer = [address](const QString& text) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [address, text] { address.complete(text); },
                Qt::QueuedConnection);
        };
        const BundledBackend::Callbacks callbacks{[answer](const QUrl& url) { answer(url.toString()); },
                                                  [answer] { answer(QString()); }};
        own = std::make_unique<BundledBackend>(foundation_, BundledBackend::standardExecutable(),
                                               folder.path(), callbacks);
        own->silence();
        own->start();
        const Handle limit =
            foundation_.clock.after(backendPatience, [address] { address.complete(QString()); });
        facts.address = co_await address.wait(scope);
    }
    const std::optional<QUrl> base = BackendChoice::addressFrom(facts.address);
    facts.isAddress = base.has_value();
    if (!base) {
        co_return facts;
    }
    HttpRequest request;
    request.method = "GET";
    request.url = base->adjusted(QUrl::StripTrailingSlash);
    request.url.setPath(request.url.path() + QStringLiteral("/healthz"));
    request.timeout = backendPatience;
    const auto reply = co_await http_.send(request, scope);
    facts.isHealthy = reply && reply->status == 200;
    facts.isRegistered = isOwn ? facts.isHealthy : !foundation_.preferences.get(preference::token).isEmpty();
    co_return facts;
}

std::vector<OpenWindow> Examination::openWindows() {
    std::vector<OpenWindow> windows;
    for (const ListedWindow& window : listWindows(display_)) {
        windows.push_back({window.process, window.title, window.windowClass});
    }
    return windows;
}

void print(const DoctorReport& report, bool json, const Localisation& words) {
    const QByteArray text = json ? asJson(report) + '\n' : asText(report, words).toUtf8();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
}

} // namespace

int runDoctor(bool json) {
    Stores stores([](const QString&) {}); // the report says it in the user's words
    const QDBusConnection session = QDBusConnection::sessionBus();
    Examination examination(stores.foundation(), session);
    Doctor doctor(examination.probes(), stores.foundation().words);
    int status = 1;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        const DoctorReport report = co_await doctor.examine(scope);
        print(report, json, stores.foundation().words);
        status = report.dictationWorks() ? 0 : 1;
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    return status;
}

} // namespace lorvane
