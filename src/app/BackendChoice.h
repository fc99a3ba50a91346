// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/BundledBackend.h"
#include "base/Foundation.h"
#include "base/Task.h"

#include <QUrl>

#include <functional>
#include <memory>

namespace lorvane {

/// Which backend the program talks to: the one of LORVANE_BACKEND_URL, else of the preference, else the one
/// that comes with the program, which is then started.
class BackendChoice {
 public:
    /// `use`: told the address, and again when it changes. `gaveUp`: the bundled one stays down.
    BackendChoice(const Foundation& foundation, std::function<void(const QUrl&)> use,
                  std::function<void()> gaveUp);

    /// Comes back when an address is known.
    QCoro::Task<void> known(TaskScope scope);

    /// The address that the user has set; empty when none is.
    [[nodiscard]] static QUrl configured(const Preferences& preferences);

 private:
    Completion<bool> known_;
    std::unique_ptr<BundledBackend> bundled_;
};

} // namespace lorvane
