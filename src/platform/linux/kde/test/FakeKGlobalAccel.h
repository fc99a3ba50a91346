// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMap>
#include <QSet>
#include <QStringList>

namespace lorvane {

/// The shortcut service of KDE on the test's session bus, by a connection of its own. Answers as it is told.
class FakeKGlobalAccel final : public QDBusVirtualObject {
    Q_OBJECT

 public:
    FakeKGlobalAccel();
    ~FakeKGlobalAccel() override;

    /// Takes the bus names. `asCompositor`: that of the compositor too.
    void appear(bool asCompositor = true);
    void disappear();

    /// A key went down or up, as the service tells it.
    void tell(const QString& action, bool isDown, const QString& component = QStringLiteral("lorvane"));
    /// The keys of each of our shortcuts.
    [[nodiscard]] QMap<QString, QList<int>> shortcuts() const { return shortcuts_; }

    /// Keys of others, with the four names that are told of them.
    QMap<int, QStringList> others;
    enum class Manner { proper, silent, error, wrongType };
    Manner manner = Manner::proper;
    QStringList calls;
    /// Shortcuts that were let go, whether or not they were there.
    QStringList unregistered;

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
    [[nodiscard]] QList<int> set(const QString& action, const QList<int>& keys);
    [[nodiscard]] QVariant answerTo(const QDBusMessage& message);

    QDBusConnection bus_;
    QMap<QString, QList<int>> shortcuts_;
    QSet<QString> registered_;
};

} // namespace lorvane
