// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/BundledBackend.h"
#include "base/Foundation.h"
#include "base/Task.h"

#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace lorvane {

/// Which backend the program talks to: the one of LORVANE_BACKEND_URL, else of the preference, else the one
/// that comes with the program, which is then started. A change of the preference is followed. A setting that
/// is no address gets no other backend in its place, since takes would then go where the user did not want
/// them; a log line says so. Main thread.
class BackendChoice {
 public:
    struct Callbacks {
        /// Told the address, and again when it changes.
        std::function<void(const QUrl&)> use;
        /// The bundled one stays down.
        std::function<void()> gaveUp;
    };
    /// `bundled`: the program file of the backend that comes with this one.
    BackendChoice(const Foundation& foundation, QString bundled, Callbacks callbacks);

    /// Comes back when an address is known.
    QCoro::Task<void> known(TaskScope scope);

    /// What the user has set; empty when nothing is.
    [[nodiscard]] static QString configured(const Preferences& preferences);
    /// Nothing for a text that is no HTTP address.
    [[nodiscard]] static std::optional<QUrl> addressFrom(const QString& text);

 private:
    void choose();
    void useConfigured(const QString& text);
    void useBundled();

    const Foundation foundation_;
    const QString executable_;
    const Callbacks callbacks_;
    std::optional<QString> chosen_;
    Completion<bool> known_;
    std::unique_ptr<BundledBackend> bundled_;
    Handle watch_;
};

} // namespace lorvane
