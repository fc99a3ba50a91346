// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <variant>

namespace lorvane {

/// One file of per-user state, read once and then always replaced as a whole.
class StateFile {
 public:
    struct Absent {};
    /// Something stands there, but no content comes of it.
    struct Unreadable {};
    using Content = std::variant<Absent, Unreadable, QByteArray>;

    enum class Predecessor {
        overwritten,
        /// It is kept beside the new file, under its name with ".unreadable" after it (and a number, when
        /// that is taken). The new file is not written when that cannot be done.
        setAside,
    };

    virtual ~StateFile() = default;
    /// Does not wait for anybody, whatever stands at the path. The bytes have some room behind them, which
    /// spares a parser that reads past their end a copy.
    [[nodiscard]] virtual Content read() = 0;
    /// On any thread, one call at a time. Whenever the program or the machine ends: the file is the old one
    /// or the new one, whole. False: it is the old one.
    [[nodiscard]] virtual bool replace(const QByteArray& bytes, Predecessor predecessor) = 0;
};

} // namespace lorvane
