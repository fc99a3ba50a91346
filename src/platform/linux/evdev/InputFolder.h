// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/evdev/KeyDevices.h"

#include <QSocketNotifier>

namespace lorvane {

/// The devices of the kernel's input folder, as linux/input.h tells of them. Changes come by inotify.
class InputFolder final : public KeyDevices {
 public:
    explicit InputFolder(QString folder = QStringLiteral("/dev/input"));
    InputFolder(const InputFolder&) = delete;
    InputFolder& operator=(const InputFolder&) = delete;
    ~InputFolder() override;

    [[nodiscard]] Access access() const override;
    [[nodiscard]] std::vector<QString> names() const override;
    [[nodiscard]] std::unique_ptr<KeyDevice> open(const QString& name) const override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    void readChanges();

    QString folder_;
    int changes_ = -1;
    std::unique_ptr<QSocketNotifier> changesWatch_;
    Signal<> changed_;
};

} // namespace lorvane
