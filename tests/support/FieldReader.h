// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace lorvane {

// What an application says about the field that has its focus.
struct ShownField {
    qint64 pid = 0;
    QString application;
    QString toolkit;
    QString role;
    QString text;
    int caret = -1; // in the toolkit's own units
    bool editable = false;
    bool password = false;

    QJsonObject toJson() const;
};

// Reads fields of other programs through the accessibility bus. It is a process's only user of that bus,
// which allows one thread alone: test programs whose subject reads fields itself run the tool lorvane-field
// instead.
class FieldReader {
 public:
    // Throws std::runtime_error when there is no accessibility bus.
    FieldReader();
    ~FieldReader();
    FieldReader(const FieldReader&) = delete;
    FieldReader& operator=(const FieldReader&) = delete;

    // The focused text of the process, by a search through its tree; nothing when none has the focus or it
    // hangs.
    std::optional<ShownField> focused(qint64 pid) const;
    // The same while another program has the focus: the process's first large editable text.
    std::optional<ShownField> resting(qint64 pid) const;
    // The text of the field that `focused` found last, read without another search.
    std::optional<QString> textAgain() const;
    // Of a word processor, which offers each paragraph as a field of its own: all that are on screen, joined
    // by line feeds, with the focus or without it. The caret is not told.
    std::optional<ShownField> document(qint64 pid) const;
    // Puts the caret (first == last) or the selection there, in the toolkit's own units; false when refused.
    bool select(qint64 pid, int first, int last) const;

 private:
    struct Bus;
    std::unique_ptr<Bus> bus_;
};

} // namespace lorvane
