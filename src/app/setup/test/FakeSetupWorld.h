// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupWorld.h"

#include <map>
#include <set>

namespace lorvane {

/// A machine in memory.
class FakeSetupWorld final : public SetupWorld {
 public:
    [[nodiscard]] Result<std::optional<QByteArray>, QString> read(const QString& path) const override {
        if (unreadable.contains(path)) {
            return failure(QStringLiteral("Permission denied"));
        }
        const auto found = files.find(path);
        return found == files.end() ? std::nullopt : std::optional(found->second);
    }
    bool write(const QString& path, const QByteArray& content) override {
        if (readOnly.contains(path)) {
            return false;
        }
        files[path] = content;
        folders.insert(path.section(u'/', 0, -2));
        return true;
    }
    [[nodiscard]] QStringList foldersToMake(const QString& path) const override {
        return folders.contains(path.section(u'/', 0, -2)) ? QStringList()
                                                           : QStringList{path.section(u'/', 0, -2)};
    }
    bool remove(const QString& path, const QStringList& emptied) override {
        files.erase(path);
        for (const QString& folder : emptied) {
            folders.erase(folder);
        }
        return true;
    }
    std::optional<QByteArray> run(const QStringList& command) override {
        commands.append(command.join(u' '));
        return QByteArray();
    }
    QString placeShellExtension(bool wanted) override {
        if (!extensionProblem.isEmpty()) {
            return extensionProblem;
        }
        extension = wanted;
        return {};
    }
    void switchDevices(bool on) override { devices = on; }
    bool askPortal(bool allow) override {
        portal = allow && userAllows;
        return portal == allow;
    }

    std::map<QString, QByteArray> files;
    std::set<QString> folders;
    std::set<QString> readOnly;
    std::set<QString> unreadable;
    bool extension = false;
    QString extensionProblem;
    QStringList commands;
    bool devices = false;
    bool portal = false;
    bool userAllows = true;
};

} // namespace lorvane
