// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <optional>

namespace lorvane {

/// An engine of IBus that passes every key on and commits text: the daemon's calls to
/// org.freedesktop.IBus.Factory and org.freedesktop.IBus.Engine. There is one engine at a time. Main thread.
class IbusEngine final : public QDBusVirtualObject {
 public:
    static const QString name;

    /// A field has the focus, and its application listens to this engine.
    [[nodiscard]] bool hasField() const { return hasFocus_; }
    /// It has been told what that field is for.
    [[nodiscard]] bool knowsPurpose() const { return purpose_.has_value(); }
    /// That field is for a password or a PIN.
    [[nodiscard]] bool isSecret() const;
    /// The signal that brings a text into the field.
    [[nodiscard]] QDBusMessage commit(const QString& text) const;
    /// The daemon has gone.
    void forget();

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
    [[nodiscard]] QDBusMessage answerTo(const QDBusMessage& call);
    [[nodiscard]] QDBusMessage create(const QDBusMessage& call);
    [[nodiscard]] QDBusMessage answerAboutProperty(const QDBusMessage& call);
    void noticeCall(const QDBusMessage& call);

    QString path_;
    int made_ = 0;
    bool hasFocus_ = false;
    std::optional<uint> purpose_;
};

} // namespace lorvane
