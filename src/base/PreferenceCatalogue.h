// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"

#include <vector>

/// Every preference of the program: key, type, what an absent key reads as, who writes it. Keys of this
/// desktop alone begin with "tirra.linux.".
namespace lorvane::preference {

inline const PreferenceKey<QString> appearance{QLatin1String("tirra.mac.appearance"), "system",
                                               QLatin1String("settings")};
inline const PreferenceKey<QStringList> appsThatCannotKeepUp{
    QLatin1String("tirra.mac.appsThatCannotKeepUp"), {}, QLatin1String("controller")};
inline const PreferenceKey<bool> autoDetect{QLatin1String("tirra.mac.autoDetect"), false,
                                            QLatin1String("first run")};
inline const PreferenceKey<QString> device{
    QLatin1String("tirra.mac.device"), {}, QLatin1String("backend client")};
inline const PreferenceKey<bool> dumpTakes{QLatin1String("tirra.mac.dumpTakes"), false,
                                           QLatin1String("nobody in the program")};
inline const PreferenceKey<int> goalStreak{QLatin1String("tirra.mac.goalStreak"), 0,
                                           QLatin1String("stats service")};
inline const PreferenceKey<QString> historyDevice{QLatin1String("tirra.mac.historyDevice"), "mac",
                                                  QLatin1String("home window")};
inline const PreferenceKey<QString> hotkey{QLatin1String("tirra.mac.hotkey"), "rightCommand",
                                           QLatin1String("settings, first run, menu")};
inline const PreferenceKey<bool> icloudSync{QLatin1String("tirra.mac.icloudSync"), true,
                                            QLatin1String("settings, first run")};
inline const PreferenceKey<bool> includePhoneInStats{QLatin1String("tirra.mac.includePhoneInStats"), true,
                                                     QLatin1String("statistics screen, settings")};
inline const PreferenceKey<QString> inputUID{
    QLatin1String("tirra.mac.inputUID"), {}, QLatin1String("menu, settings")};
inline const PreferenceKey<QByteArray> manualSummaries{
    QLatin1String("tirra.mac.manualSummaries"), {}, QLatin1String("recap store")};
inline const PreferenceKey<QString> noteTranslateTo{QLatin1String("tirra.mac.noteTranslateTo"), "en",
                                                    QLatin1String("message detail")};
inline const PreferenceKey<double> nudgeLast{QLatin1String("tirra.mac.nudgeLast"), 0.0,
                                             QLatin1String("nudge")};
inline const PreferenceKey<bool> nudgeLearned{QLatin1String("tirra.mac.nudgeLearned"), false,
                                              QLatin1String("home window")};
inline const PreferenceKey<double> nudgeSuppress{QLatin1String("tirra.mac.nudgeSuppress"), 0.0,
                                                 QLatin1String("nudge")};
inline const PreferenceKey<bool> nudges{QLatin1String("tirra.mac.nudges"), true,
                                        QLatin1String("settings, menu")};
inline const PreferenceKey<bool> onboarded{QLatin1String("tirra.mac.onboarded"), false,
                                           QLatin1String("first run")};
inline const PreferenceKey<bool> openWindowAtLaunch{QLatin1String("tirra.mac.openWindowAtLaunch"), false,
                                                    QLatin1String("settings")};
inline const PreferenceKey<bool> phoneNudgeDismissed{QLatin1String("tirra.mac.phoneNudgeDismissed"), false,
                                                     QLatin1String("home window")};
inline const PreferenceKey<int> recordLimit{QLatin1String("tirra.mac.recordLimit"), 0,
                                            QLatin1String("settings")};
inline const PreferenceKey<QString> refcode{
    QLatin1String("tirra.mac.refcode"), {}, QLatin1String("backend client")};
inline const PreferenceKey<QString> role{QLatin1String("tirra.mac.role"), {}, QLatin1String("first run")};
inline const PreferenceKey<bool> soundOn{QLatin1String("tirra.mac.soundOn"), true, QLatin1String("settings")};
inline const PreferenceKey<QString> source{QLatin1String("tirra.mac.source"), {}, QLatin1String("first run")};
inline const PreferenceKey<QString> speakLang{
    QLatin1String("tirra.mac.speakLang"), {}, QLatin1String("pill, menu, settings, first run")};
inline const PreferenceKey<QStringList> speakLangs{
    QLatin1String("tirra.mac.speakLangs"), {}, QLatin1String("first run")};
inline const PreferenceKey<QString> style{
    QLatin1String("tirra.mac.style"), {}, QLatin1String("nobody in the program")};
inline const PreferenceKey<QString> toggleHotkey{QLatin1String("tirra.mac.toggleHotkey"), "rightOption",
                                                 QLatin1String("settings, first run")};
inline const PreferenceKey<QString> token{
    QLatin1String("tirra.mac.token"), {}, QLatin1String("backend client, cloud sync")};
inline const PreferenceKey<QString> translateLang{
    QLatin1String("tirra.mac.translateLang"), {}, QLatin1String("pill, menu, settings")};
inline const PreferenceKey<QStringList> typingContexts{
    QLatin1String("tirra.mac.typingContexts"), {}, QLatin1String("first run")};
inline const PreferenceKey<QString> uiLang{QLatin1String("tirra.mac.uiLang"), {}, QLatin1String("settings")};
inline const PreferenceKey<QStringList> appleLanguages{
    QLatin1String("AppleLanguages"), {}, QLatin1String("settings")};

/// "Menu", "Pause", "ScrollLock" or "F13" to "F24": the key that stands for `fn`, which never leaves a PC
/// keyboard.
inline const PreferenceKey<QString> extraKey{QLatin1String("tirra.linux.extraKey"), "Menu",
                                             QLatin1String("nobody in the program")};
/// Address of a backend of the user's own; empty means the one that comes with the program.
inline const PreferenceKey<QString> backendURL{
    QLatin1String("tirra.linux.backendURL"), {}, QLatin1String("nobody in the program")};

/// One row of the catalogue, type and default erased.
struct Row {
    QString key;
    QString type;
    QJsonValue fallback;
    QString writtenBy;
};

/// The whole catalogue in the order above.
[[nodiscard]] std::vector<Row> catalogue();

} // namespace lorvane::preference
