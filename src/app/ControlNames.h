// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Where the running program is found on the session bus.
namespace lorvane::control {

inline const QString serviceName = QStringLiteral("com.ostrand.tirra");
inline const QString objectPath = QStringLiteral("/com/ostrand/tirra");
inline const QString interfaceName = QStringLiteral("com.ostrand.tirra.Dictation1");

} // namespace lorvane::control
