// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace lorvane {

/// `program` as the one word of an entry's Exec line, by freedesktop.org's rules for desktop entries: what
/// has more than plain characters stands in quotes.
[[nodiscard]] QByteArray execWord(const QString& program);

/// A desktop entry that no menu shows, with `more` as its last lines.
[[nodiscard]] QByteArray hiddenDesktopEntry(const QString& name, const QString& program,
                                            const QByteArray& more);

} // namespace lorvane
