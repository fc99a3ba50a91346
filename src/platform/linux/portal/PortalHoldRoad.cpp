// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "input/KeyEvents.h"
#include "platform/linux/portal/PortalShortcuts.h"

#include <QDBusObjectPath>

#include <algorithm>

namespace lorvane {

namespace {

const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
const QString shortcutId = QStringLiteral("dictate");
constexpr Duration sessionPatience = std::chrono::seconds(5);

} // namespace

PortalHoldRoad::PortalHoldRoad(const Foundation& foundation, const QDBusConnection& session)
    : clock_(foundation.clock), preferences_(foundation.preferences), words_(foundation.words),
      log_(foundation.log), requests_(session, foundation.clock),
      obstacle_(QStringLiteral("the portal has not answered yet")) {
    connect(&requests_, &PortalRequests::ownerChanged, this, &PortalHoldRoad::portalCameOrWent);
    lookForPortal();
}

PortalHoldRoad::~PortalHoldRoad() { end(); }

void PortalHoldRoad::lookForPortal() {
    looking_ = startTask([this](TaskScope scope) -> QCoro::Task<void> {
        const QString interface = shortcutsInterface;
        const uint version = co_await requests_.version(interface, scope);
        setObstacle(version > 0 ? QString() : QStringLiteral("the desktop portal has no global shortcuts"));
    });
}

void PortalHoldRoad::portalCameOrWent(bool isThere) {
    if (isThere) {
        return lookForPortal();
    }
    looking_ = {};
    binding_ = {};
    forgetSession();
    setObstacle(QStringLiteral("the desktop portal has gone"));
}

void PortalHoldRoad::setObstacle(const QString& obstacle) {
    if (obstacle == obstacle_) {
        return;
    }
    obstacle_ = obstacle;
    if (!obstacle_.isEmpty()) {
        log_.diagLog(QStringLiteral("[tirra-keys] no key by the portal: %1").arg(obstacle_));
    } else if (watch_) {
        begin();
    }
    changed_.emit();
}

HoldOffer PortalHoldRoad::offer() const {
    if (!obstacle_.isEmpty()) {
        return {{}, obstacle_};
    }
    return {{{keyCode::fn, true, ChordSight::dedicated}}, {}};
}

Handle PortalHoldRoad::watch(std::vector<int> keyCodes, std::function<void(const HoldEdge&)> observer) {
    const bool isWanted = std::find(keyCodes.begin(), keyCodes.end(), keyCode::fn) != keyCodes.end();
    if (!isWanted) {
        end();
        return {};
    }
    watch_ = std::make_shared<Watch>(Watch{std::move(observer)});
    begin();
    return Handle([this, weak = std::weak_ptr(watch_)] {
        if (const auto watch = weak.lock(); watch && watch == watch_) {
            end();
        }
    });
}

void PortalHoldRoad::begin() {
    if (obstacle_.isEmpty() && session_.isEmpty() && !binding_.isRunning()) {
        binding_ = startTask([this](TaskScope scope) { return bind(scope); });
    }
}

void PortalHoldRoad::end() {
    watch_.reset();
    binding_ = {};
    if (!session_.isEmpty()) {
        requests_.closeSession(session_);
        forgetSession();
    }
}

QCoro::Task<void> PortalHoldRoad::bind(TaskScope scope) {
    const QString interface = shortcutsInterface;
    const PortalAnswer created = co_await requests_.createSession(interface, sessionPatience, scope);
    const QString session = PortalRequests::sessionOf(created);
    if (session.isEmpty()) {
        setObstacle(QStringLiteral("no session (%1)").arg(created.problem));
        co_return;
    }
    co_await bindInSession(session, scope);
}

QCoro::Task<void> PortalHoldRoad::bindInSession(QString session, TaskScope scope) {
    const QVariantList arguments = QVariantList{QVariant::fromValue(QDBusObjectPath(session))} +
                                   wantedShortcuts() + QVariantList{QString()};
    const QString interface = shortcutsInterface;
    const QString method = QStringLiteral("BindShortcuts");
    const QVariantMap none;
    hear(session);
    const PortalAnswer bound =
        co_await requests_.request(interface, method, arguments, none, dialogPatience, scope);
    const auto shortcuts = shortcutsFrom(bound.results.value(QStringLiteral("shortcuts")));
    const bool isOurs = shortcuts && std::any_of(shortcuts->begin(), shortcuts->end(),
                                                 [](const auto& one) { return one.id == shortcutId; });
    if (bound.isGranted() && isOurs && session_ == session) {
        isBound_ = true;
        changed_.emit();
        co_return;
    }
    requests_.closeSession(session);
    forgetSession();
    setObstacle(bound.outcome == PortalAnswer::Outcome::cancelled
                    ? QStringLiteral("the user has bound no key")
                    : QStringLiteral("the desktop has bound no key (%1)").arg(bound.problem));
}

QVariantList PortalHoldRoad::wantedShortcuts() const {
    PortalShortcut shortcut{
        shortcutId, {{QStringLiteral("description"), words_.text(QStringLiteral("Hold to dictate"))}}};
    const QString trigger = triggerFor(preferences_.get(preference::extraKey));
    if (!trigger.isEmpty()) {
        shortcut.properties.insert(QStringLiteral("preferred_trigger"), trigger);
    }
    return {asArgument({shortcut})};
}

// From the beginning, since the user may close the session while the dialog is open.
void PortalHoldRoad::hear(const QString& session) {
    session_ = session;
    auto& bus = requests_.bus();
    const QString service = PortalRequests::serviceName();
    const QString object = PortalRequests::objectPath();
    bus.connect(service, object, shortcutsInterface, QStringLiteral("Activated"), this,
                SLOT(activated(QDBusMessage)));
    bus.connect(service, object, shortcutsInterface, QStringLiteral("Deactivated"), this,
                SLOT(deactivated(QDBusMessage)));
    bus.connect(service, session, sessionInterface, QStringLiteral("Closed"), this,
                SLOT(closedByDesktop(QDBusMessage)));
}

void PortalHoldRoad::forgetSession() {
    if (session_.isEmpty()) {
        return;
    }
    auto& bus = requests_.bus();
    const QString service = PortalRequests::serviceName();
    const QString object = PortalRequests::objectPath();
    bus.disconnect(service, object, shortcutsInterface, QStringLiteral("Activated"), this,
                   SLOT(activated(QDBusMessage)));
    bus.disconnect(service, object, shortcutsInterface, QStringLiteral("Deactivated"), this,
                   SLOT(deactivated(QDBusMessage)));
    bus.disconnect(service, session_, sessionInterface, QStringLiteral("Closed"), this,
                   SLOT(closedByDesktop(QDBusMessage)));
    session_.clear();
    isBound_ = false;
    if (const auto watch = watch_) {
        watch->observer({keyCode::fn, HoldEdgeKind::lost, clock_.now()});
    }
}

void PortalHoldRoad::activated(const QDBusMessage& signal) { tell(signal, HoldEdgeKind::down); }

void PortalHoldRoad::deactivated(const QDBusMessage& signal) { tell(signal, HoldEdgeKind::up); }

// The time of the signal is not used: portals do not agree on what it counts from.
void PortalHoldRoad::tell(const QDBusMessage& signal, HoldEdgeKind kind) {
    const QVariantList arguments = signal.arguments();
    const bool isOurs = arguments.value(0).value<QDBusObjectPath>().path() == session_ &&
                        arguments.value(1).toString() == shortcutId;
    const auto watch = watch_; // what is told may end it
    if (watch && isOurs && !session_.isEmpty()) {
        watch->observer({keyCode::fn, kind, clock_.now()});
    }
}

void PortalHoldRoad::closedByDesktop(const QDBusMessage& signal) {
    if (signal.path() != session_) {
        return;
    }
    binding_ = {};
    forgetSession();
    setObstacle(QStringLiteral("the desktop has closed the session"));
}

QCoro::Task<std::optional<bool>> PortalHoldRoad::isHeld(int /*keyCode*/, TaskScope /*scope*/) {
    co_return std::nullopt;
}

} // namespace lorvane
