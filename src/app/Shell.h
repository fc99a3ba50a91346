// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/DesktopAdapters.h"
#include "app/DesktopPresence.h"
#include "app/Dictation.h"
#include "app/PackageUpdates.h"
#include "platform/linux/language/IcuLocaleNames.h"
#include "platform/linux/x11/OwnWindowKeyFilter.h"
#include "ui/menu/Tray.h"

namespace lorvane {

/// The menu and the tray around a dictation.
struct Shell {
    Shell(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence,
          Dictation& dictation, std::function<void()> quit);

    IcuLocaleNames locale;
    LanguageNames languages;
    MacAudioDevices devices;
    PackageUpdates updates;
    MenuModel menu;
    Tray tray;
    OwnWindowKeyFilter ownKeys;
};

} // namespace lorvane
