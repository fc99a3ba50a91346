// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"

/// The part of the catalogue (PreferenceCatalogue.h) that single adapters of this desktop use.
namespace lorvane::preference {

/// The user's word that key devices may be read. Whoever may read them may read everything that is typed, in
/// every program; so it is off until the user says otherwise.
inline const PreferenceKey<bool> readKeyDevices{QLatin1String("tirra.linux.readKeyDevices"), false,
                                                QLatin1String("lorvane setup hold")};
/// What the desktop gave the last time the user allowed keys to be posted; opens a session without a
/// question, once. Empty: never allowed.
inline const PreferenceKey<QString> remoteDesktopToken{
    QLatin1String("tirra.linux.remoteDesktopToken"), {}, QLatin1String("key posting by the portal")};
/// The user has been told once that nothing shows status items.
inline const PreferenceKey<bool> trayMissingTold{QLatin1String("tirra.linux.trayMissingTold"), false,
                                                 QLatin1String("tray")};
/// The user's engine of IBus while ours is in its place; empty when it is not.
inline const PreferenceKey<QString> usersInputMethod{
    QLatin1String("tirra.linux.usersInputMethod"), {}, QLatin1String("input method")};

} // namespace lorvane::preference
