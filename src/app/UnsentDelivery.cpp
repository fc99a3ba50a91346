// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/UnsentDelivery.h"

#include "api/IdentityCloud.h"
#include "api/MacAPI.h"
#include "app/BackendChoice.h"
#include "app/HistoryJournal.h"
#include "app/PatientHttpClient.h"
#include "app/Stores.h"
#include "app/UnsentTakes.h"
#include "platform/linux/desktop/DiskStateFile.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "platform/linux/secrets/KeychainSecretStore.h"

#include <QCoreApplication>

namespace lorvane {

void deliverUnsentTakes() {
    Stores stores;
    const Foundation& foundation = stores.foundation();
    const UnsentTakes unsent(foundation, UnsentTakes::standardFolder());
    if (unsent.isEmpty()) {
        return;
    }
    QtHttpClient network(foundation.clock);
    PatientHttpClient http(network, foundation.clock);
    KeychainSecretStore secrets(foundation.clock);
    NoIdentityCloud cloud;
    MacAPI api(http, secrets, foundation.preferences, cloud);
    DiskStateFile file(dataFolder() + QStringLiteral("/tirra-history.json"));
    MacHistoryStore history(foundation.clock, file);
    HistoryJournal journal(history, foundation.preferences);
    const auto use = [&](const QUrl& address) {
        api.setBackendURL(address);
        http.backendStarted(BackendChoice::configured(foundation.preferences).isEmpty());
    };
    BackendChoice backend(foundation, BundledBackend::standardExecutable(),
                          {use, [] { QCoreApplication::quit(); }});
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        co_await backend.known(scope);
        co_await unsent.deliver(api, journal, scope);
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    });
    QCoreApplication::exec();
}

} // namespace lorvane
