// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BackendChoice.h"

#include "app/Stores.h"
#include "base/PreferenceCatalogue.h"

namespace lorvane {

QString BackendChoice::configured(const Preferences& preferences) {
    const QString fromEnvironment = qEnvironmentVariable("LORVANE_BACKEND_URL").trimmed();
    return fromEnvironment.isEmpty() ? preferences.get(preference::backendURL).trimmed() : fromEnvironment;
}

std::optional<QUrl> BackendChoice::addressFrom(const QString& text) {
    const QUrl url(text);
    const bool isHttp = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && isHttp && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

BackendChoice::BackendChoice(const Foundation& foundation, QString bundled, Callbacks callbacks)
    : foundation_(foundation), executable_(std::move(bundled)), callbacks_(std::move(callbacks)),
      watch_(foundation.preferences.subscribe(preference::backendURL, [this] { choose(); })) {
    choose();
}

QCoro::Task<void> BackendChoice::known(TaskScope scope) {
    if (!known_.isComplete()) {
        co_await known_.wait(scope);
    }
}

void BackendChoice::choose() {
    const QString text = configured(foundation_.preferences);
    if (chosen_ == text) {
        return;
    }
    chosen_ = text;
    if (text.isEmpty()) {
        useBundled();
    } else {
        bundled_.reset();
        useConfigured(text);
    }
}

void BackendChoice::useConfigured(const QString& text) {
    const std::optional<QUrl> address = addressFrom(text);
    if (!address) {
        foundation_.log.diagLog(
            QStringLiteral("[lorvane-backend] %1 is not the address of a backend").arg(text));
    }
    callbacks_.use(address.value_or(QUrl()));
    known_.complete(true);
}

void BackendChoice::useBundled() {
    bundled_ =
        std::make_unique<BundledBackend>(foundation_, executable_, dataFolder() + QStringLiteral("/backend"),
                                         BundledBackend::Callbacks{[this](const QUrl& address) {
                                                                       callbacks_.use(address);
                                                                       known_.complete(true);
                                                                   },
                                                                   callbacks_.gaveUp});
    bundled_->start();
}

} // namespace lorvane
