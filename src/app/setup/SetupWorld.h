// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace lorvane {

/// What a setup touches. Main thread; everything is done when a call returns.
class SetupWorld {
 public:
    virtual ~SetupWorld() = default;

    /// Nothing when there is no such file. Fails, with the system's word for it, when it cannot be read.
    [[nodiscard]] virtual Result<std::optional<QByteArray>, QString> read(const QString& path) const = 0;
    /// The folders that a write of that file would make, outermost first.
    [[nodiscard]] virtual QStringList foldersToMake(const QString& path) const = 0;
    /// Whole or not at all, with its folders; permissions of a file that is there stay. False when it cannot
    /// be.
    virtual bool write(const QString& path, const QByteArray& content) = 0;
    /// And those of the folders, outermost first, that are empty then.
    virtual bool remove(const QString& path, const QStringList& folders) = 0;
    /// The output of a program that ended well within ten seconds.
    virtual std::optional<QByteArray> run(const QStringList& command) = 0;
    /// Puts the extension of the GNOME Shell in place, or takes it away. What went wrong, or empty.
    virtual QString placeShellExtension(bool wanted) = 0;
    /// The preference "tirra.linux.readKeyDevices", and the word of the portal.
    virtual void switchDevices(bool on) = 0;
    virtual bool askPortal(bool allow) = 0;
};

} // namespace lorvane
