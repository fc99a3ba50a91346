// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BackendChoice.h"

#include "app/Stores.h"
#include "base/PreferenceCatalogue.h"

namespace lorvane {

QUrl BackendChoice::configured(const Preferences& preferences) {
    const QString fromEnvironment = qEnvironmentVariable("LORVANE_BACKEND_URL");
    return QUrl(fromEnvironment.isEmpty() ? preferences.get(preference::backendURL) : fromEnvironment);
}

BackendChoice::BackendChoice(const Foundation& foundation, std::function<void(const QUrl&)> use,
                             std::function<void()> gaveUp) {
    if (const QUrl address = configured(foundation.preferences); !address.isEmpty()) {
        use(address);
        known_.complete(true);
        return;
    }
    bundled_ = std::make_unique<BundledBackend>(
        foundation, BundledBackend::standardExecutable(), dataFolder() + QStringLiteral("/backend"),
        BundledBackend::Callbacks{[this, use = std::move(use)](const QUrl& address) {
                                      use(address);
                                      known_.complete(true);
                                  },
                                  std::move(gaveUp)});
    bundled_->start();
}

QCoro::Task<void> BackendChoice::known(TaskScope scope) {
    if (!known_.isComplete()) {
        co_await known_.wait(scope);
    }
}

} // namespace lorvane
