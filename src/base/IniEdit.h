// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <optional>

namespace lorvane {

/// Single keys of a settings file of the kind `[Group]`, `Key=value`. Every byte that is not the key's own
/// line stays as it is. A key counts with a suffix such as `[$e]` too.
[[nodiscard]] std::optional<QByteArray> iniLine(const QByteArray& file, const QByteArray& group,
                                                const QByteArray& key);
/// The file with `line` (without its end) in place of the key's, or added to the group, which is added too
/// when it is missing. Nothing as line takes the key away, and leaves the group.
[[nodiscard]] QByteArray withIniLine(const QByteArray& file, const QByteArray& group, const QByteArray& key,
                                     const std::optional<QByteArray>& line);

} // namespace lorvane
