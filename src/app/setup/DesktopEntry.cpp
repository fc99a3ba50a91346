// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/DesktopEntry.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr QLatin1String reserved(" \t\n\"'\\><~|&;$*?#()`");
constexpr QLatin1String escapedInQuotes("\"`$\\");

/// In quotes four characters get a backslash, and a backslash in a value is written as two.
QString quoted(QChar character) {
    QString text(character);
    if (escapedInQuotes.contains(character)) {
        text.prepend(QLatin1Char('\\'));
    }
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    return text;
}

} // namespace

QByteArray execWord(const QString& program) {
    QString word = program;
    word.replace(QLatin1Char('%'), QLatin1String("%%")); // else it begins a field code
    const auto isReserved = [](QChar character) { return reserved.contains(character); };
    if (std::none_of(word.cbegin(), word.cend(), isReserved)) {
        return word.toUtf8();
    }
    QString inQuotes;
    for (const QChar character : word) {
        inQuotes += quoted(character);
    }
    return '"' + inQuotes.toUtf8() + '"';
}

QByteArray hiddenDesktopEntry(const QString& name, const QString& program, const QByteArray& more) {
    return "[Desktop Entry]\nType=Application\nName=" + name.toUtf8() + "\nExec=" + execWord(program) +
           "\nNoDisplay=true\n" + more + '\n';
}

} // namespace lorvane
