// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace lorvane {

/// A process and all that descend from it.
QList<qint64> withDescendants(qint64 process);
/// Whether a text stands anywhere in the writable memory of these processes, as UTF-8 or UTF-16. Throws
/// std::runtime_error when the memory of one that runs cannot be read, so that "not found" always means it.
bool memoryHolds(const QList<qint64>& processes, const QString& text);

} // namespace lorvane
