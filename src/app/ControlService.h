// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"
#include "core/DictationController.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <vector>

namespace lorvane {

/// The program on the session bus: what the command line and bindings of the desktop talk to.
class ControlService : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.ostrand.tirra.Dictation1")
    Q_PROPERTY(QString Phase READ phaseName)
    Q_PROPERTY(QString Notice READ notice)
    Q_PROPERTY(QString Severity READ severity)
    Q_PROPERTY(bool PermissionsGranted READ permissionsGranted)

 public:
    /// Lives as long as `parent`, the object that is registered on the bus.
    struct Ends {
        std::function<void()> quit;
        std::function<void()> restart;
    };
    ControlService(QObject* parent, DictationController& controller, QDBusConnection bus, Ends ends);

    [[nodiscard]] QString phaseName() const;
    [[nodiscard]] QString notice() const;
    [[nodiscard]] QString severity() const;
    [[nodiscard]] bool permissionsGranted() const;

 public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    void Start();
    void Stop();
    void Toggle();
    void Cancel();
    void Open();
    void Quit();
    /// Ends the program and starts it anew, as after a change of the interface language.
    void Restart();

 private:
    void announce(const QVariantMap& changed);

    DictationController& controller_;
    QDBusConnection bus_;
    Ends ends_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
