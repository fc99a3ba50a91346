// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "input/HoldRoad.h"
#include "platform/linux/gnome/BusName.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QObject>

#include <cstdint>
#include <memory>
#include <set>

namespace lorvane {

/// Edges told by our extension of the GNOME Shell (packaging/gnome-shell-extension): every key, left and
/// right apart, wherever the focus is, at the time at which it moved. The extension watches only while a
/// watch runs here, and serves only the process that has `programName` on the bus; it is followed as it comes
/// and goes, with the screen lock for instance. Main thread; nothing waits for the bus.
class ShellExtensionHoldRoad final : public QObject, public HoldRoad {
    Q_OBJECT

 public:
    struct Options {
        /// The name by which the extension knows us.
        QString programName;
        /// The Linux input code of the key that stands for `fn`; absent when there is none.
        std::function<std::optional<int>()> extraKey;
        /// Whether the program itself posts keys now, by a virtual keyboard; those are left out then.
        std::function<bool()> isPosting;
    };

    ShellExtensionHoldRoad(QDBusConnection session, Clock& clock, Options options);
    ~ShellExtensionHoldRoad() override;

    [[nodiscard]] QString name() const override { return QStringLiteral("shell extension"); }
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    /// The extension has answered that it watches.
    [[nodiscard]] bool isInForce(int /*keyCode*/) const override { return isInForce_; }
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

    /// The modifiers that are down as far as the watch has seen, as Linux input codes and as bits of
    /// `modifierFlag`. Nothing while nobody watches.
    [[nodiscard]] std::vector<int> heldModifiers() const;
    [[nodiscard]] std::uint32_t modifierFlags() const;

 private Q_SLOTS:
    void keyMoved(uint key, bool isDown, uint time, bool isVirtual);

 private:
    struct Watch {
        std::vector<int> keyCodes;
        std::function<void(const HoldEdge&)> observer;
    };

    void extensionChanged();
    void programChanged();
    /// Tells the extension what is watched now.
    void beginWatch();
    void endWatch();
    QDBusPendingCall send(const QString& method, const QVariantList& arguments);
    void setInForce(bool isInForce);
    void tell(int keyCode, HoldEdgeKind kind, Instant time);
    [[nodiscard]] std::optional<int> inputCodeOf(int keyCode) const;
    [[nodiscard]] int keyCodeOf(int inputCode) const;
    [[nodiscard]] Instant instantOf(uint time) const;

    QDBusConnection session_;
    Clock& clock_;
    Options options_;
    std::shared_ptr<Watch> watch_;
    /// Linux input codes.
    std::set<int> down_;
    bool isInForce_ = false;
    /// Answers to earlier watches do not count.
    std::uint64_t lastWatch_ = 0;
    Signal<> changed_;
    BusName extension_;
    BusName program_;
};

} // namespace lorvane
