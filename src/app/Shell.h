// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/DesktopAdapters.h"
#include "app/DesktopPresence.h"
#include "app/Dictation.h"
#include "app/PackageUpdates.h"
#include "platform/linux/language/IcuLocaleNames.h"
#include "ui/menu/Tray.h"

namespace lorvane {

/// The menu, the tray and the pill's content around a dictation.
struct Shell {
    Shell(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence,
          Dictation& dictation, std::function<void()> quit);
    ~Shell();
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    IcuLocaleNames locale;
    LanguageNames languages;
    MacAudioDevices devices;
    PackageUpdates updates;
    MenuModel menu;
    Tray tray;

 private:
    [[nodiscard]] PillCommands pillCommands(Dictation& dictation, std::function<void()> quit);

    DesktopPresence& presence_;
};

} // namespace lorvane
