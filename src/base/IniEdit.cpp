// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/IniEdit.h"

#include <QList>

namespace lorvane {

namespace {

struct Place {
    /// Where a line for the group goes; -1 when the file has no such group.
    qsizetype groupEnd = -1;
    /// The key's line; -1 when it is missing.
    qsizetype line = -1;
};

bool isLineOf(const QByteArray& line, const QByteArray& key) {
    const QByteArray name = line.left(line.indexOf('=')).trimmed();
    return line.contains('=') && (name == key || name.startsWith(key + '['));
}

Place find(const QList<QByteArray>& lines, const QByteArray& group, const QByteArray& key) {
    Place place;
    bool inGroup = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines[i].trimmed();
        if (line.startsWith('[')) {
            inGroup = line == '[' + group + ']';
        }
        if (inGroup && !line.isEmpty()) {
            place.groupEnd = i + 1;
            if (isLineOf(line, key)) {
                place.line = i;
            }
        }
    }
    return place;
}

} // namespace

std::optional<QByteArray> iniLine(const QByteArray& file, const QByteArray& group, const QByteArray& key) {
    const QList<QByteArray> lines = file.split('\n');
    const Place place = find(lines, group, key);
    return place.line < 0 ? std::nullopt : std::optional(lines[place.line]);
}

QByteArray withIniLine(const QByteArray& file, const QByteArray& group, const QByteArray& key,
                       const std::optional<QByteArray>& line) {
    QList<QByteArray> lines = file.split('\n');
    const Place place = find(lines, group, key);
    if (place.line >= 0) {
        lines.removeAt(place.line);
        if (line) {
            lines.insert(place.line, *line);
        }
    } else if (line && place.groupEnd >= 0) {
        lines.insert(place.groupEnd, *line);
    } else if (line) {
        const QByteArray gap = file.isEmpty() || file.endsWith("\n\n") ? ""
                               : file.endsWith('\n')                   ? "\n"
                                                                       : "\n\n";
        return file + gap + '[' + group + "]\n" + *line + '\n';
    }
    return lines.join('\n');
}

} // namespace lorvane
