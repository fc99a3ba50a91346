// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DesktopPreferences.h"
#include "base/Foundation.h"
#include "base/Signal.h"
#include "input/HoldRoad.h"
#include "platform/linux/evdev/KeyDevices.h"
#include "platform/linux/evdev/KeyEventStream.h"

#include <QSocketNotifier>

#include <map>
#include <memory>

namespace lorvane {

using preference::readKeyDevices;

/// Keys straight from the devices: every key of every keyboard, on any desktop, left and right told apart.
/// Only when the user has switched it on and may read the devices. They are open only while a watch lives,
/// and are never grabbed. Of keys that have no meaning here it is told that one went down, and nothing is
/// kept of which. Main thread.
class EvdevHoldRoad final : public HoldRoad {
 public:
    EvdevHoldRoad(const Foundation& foundation, KeyDevices& devices);
    EvdevHoldRoad(const EvdevHoldRoad&) = delete;
    EvdevHoldRoad& operator=(const EvdevHoldRoad&) = delete;
    ~EvdevHoldRoad() override = default;

    [[nodiscard]] QString name() const override { return QStringLiteral("key devices"); }
    [[nodiscard]] HoldOffer offer() const override { return offer_; }
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    /// The modifiers that are down on any keyboard, as bits of `modifierFlag`; 0 while nothing is read.
    [[nodiscard]] std::uint32_t heldModifiers() const;
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    /// A device may go while its own notifier is telling.
    struct EndLater {
        void operator()(QSocketNotifier* notifier) const;
    };
    struct Open {
        std::unique_ptr<KeyDevice> device;
        std::unique_ptr<QSocketNotifier, EndLater> readable;
        KeyEventStream stream;
        /// Modifiers, the extra key and Escape that are down on it.
        EvdevKeys down;
    };
    struct Watch {
        std::function<void(const HoldEdge&)> observer;
    };

    void look();
    [[nodiscard]] HoldOffer lookedAt() const;
    void openDevices();
    void openDevice(const QString& name);
    void closeDevice(const QString& name);
    void readDevice(const QString& name);
    void loseKeys(Open& open);
    void take(Open& open, const KeyEventStream::Item& item);
    void setDown(Open& open, EvdevCode key, bool down, Instant time);
    void resynchronise(Open& open);
    void tell(EvdevCode key, HoldEdgeKind kind, Instant time);
    [[nodiscard]] bool isDownAnywhere(EvdevCode key) const;
    [[nodiscard]] EvdevKeys namedKeys() const;
    [[nodiscard]] std::optional<EvdevCode> extraKey() const;

    Clock& clock_;
    Preferences& preferences_;
    DiagnosticLog& log_;
    KeyDevices& devices_;
    HoldOffer offer_;
    std::shared_ptr<Watch> watch_;
    std::map<QString, std::shared_ptr<Open>> open_;
    Signal<> changed_;
    Handle lookAgain_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
