// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>

#include <cstdint>

namespace lorvane {

/// Which of the keymap's layouts is in force: a Wayland client is told only while it has the focus, KWin
/// tells everyone on the session bus (org.kde.keyboard) when there are several. Main thread; nothing waits.
class KdeLayout final : public QObject {
    Q_OBJECT

 public:
    explicit KdeLayout(QDBusConnection session);

    /// Counted from 0; 0 while nobody has told.
    [[nodiscard]] std::uint32_t group() const { return group_; }

 private Q_SLOTS:
    void onLayoutChanged(uint group) { group_ = group; }
    void askGroup();

 private:
    QDBusConnection session_;
    std::uint32_t group_ = 0;
};

} // namespace lorvane
