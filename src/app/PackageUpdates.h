// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"
#include "ui/menu/Updates.h"

namespace lorvane {

/// The program comes as a package, and newer ones come the same way: none is found here, and the user who
/// asks is told where they come from.
class PackageUpdates final : public Updates {
 public:
    PackageUpdates(const Localisation& words, std::function<void(const QString& text)> tell)
        : words_(words), tell_(std::move(tell)) {}

    [[nodiscard]] std::optional<QString> available() const override { return std::nullopt; }
    [[nodiscard]] Handle subscribeAvailable(std::function<void()> /*changed*/) override { return {}; }
    void checkForUpdates() override;

 private:
    const Localisation& words_;
    std::function<void(const QString& text)> tell_;
};

} // namespace lorvane
