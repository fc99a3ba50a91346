// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace lorvane {

/// What the desktop knows of an application: one .desktop file, in the form that
/// freedesktop.org gives desktop entries.
struct DesktopEntry {
    /// The file's name without its ending.
    QString id;
    /// In the user's language.
    QString name;
    QString startupWmClass;
    /// The base name of the program that Exec starts.
    QString program;
};

/// What a window tells of its application. Empty where it tells nothing.
struct WindowTraits {
    QString gtkApplicationId;
    QString instanceName;
    QString className;
    /// The base name of the running program's file.
    QString program;
};

/// The installed applications. Read when first asked and again when a folder has changed.
class DesktopEntries {
 public:
    /// `folders`: where .desktop files stand, the most important one first. `language` as in "de_AT".
    DesktopEntries(QStringList folders, QString language)
        : folders_(std::move(folders)), language_(std::move(language)) {}

    /// The folders of the XDG base directories.
    [[nodiscard]] static QStringList standardFolders();
    /// The entry of the application that a window belongs to. Letter case counts for nothing, since windows
    /// and entries often differ in it.
    [[nodiscard]] std::optional<DesktopEntry> find(const WindowTraits& traits);

 private:
    void readIfChanged();
    void readFolder(const QString& folder);
    [[nodiscard]] const DesktopEntry* first(const QHash<QString, std::size_t>& index,
                                            const QString& key) const;

    QStringList folders_;
    QString language_;
    std::vector<DesktopEntry> entries_;
    QHash<QString, std::size_t> byId_;
    QHash<QString, std::size_t> byWmClass_;
    QHash<QString, std::size_t> byProgram_;
    std::vector<QDateTime> readAt_;
};

/// The entry that a .desktop file's text tells; nothing when it is no application.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(const QString& id, const QByteArray& text,
                                                            const QString& language);

} // namespace lorvane
