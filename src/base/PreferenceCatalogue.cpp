// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PreferenceCatalogue.h"

#include "base/DesktopPreferences.h"

namespace lorvane::preference {

namespace {

QString typeName(const QString&) { return QStringLiteral("string"); }
QString typeName(bool) { return QStringLiteral("Boolean"); }
QString typeName(int) { return QStringLiteral("integer"); }
QString typeName(double) { return QStringLiteral("real"); }
QString typeName(const QStringList&) { return QStringLiteral("array of strings"); }
QString typeName(const QByteArray&) { return QStringLiteral("data"); }

template <typename T>
Row row(const PreferenceKey<T>& key) {
    return {key.name, typeName(key.fallback), detail::toJson(key.fallback), key.writtenBy};
}

} // namespace

std::vector<Row> catalogue() {
    return {row(appearance),
            row(appsThatCannotKeepUp),
            row(autoDetect),
            row(device),
            row(dumpTakes),
            row(goalStreak),
            row(historyDevice),
            row(hotkey),
            row(icloudSync),
            row(includePhoneInStats),
            row(inputUID),
            row(manualSummaries),
            row(noteTranslateTo),
            row(nudgeLast),
            row(nudgeLearned),
            row(nudgeSuppress),
            row(nudges),
            row(onboarded),
            row(openWindowAtLaunch),
            row(phoneNudgeDismissed),
            row(recordLimit),
            row(refcode),
            row(role),
            row(soundOn),
            row(source),
            row(speakLang),
            row(speakLangs),
            row(style),
            row(toggleHotkey),
            row(token),
            row(translateLang),
            row(typingContexts),
            row(uiLang),
            row(appleLanguages),
            row(extraKey),
            row(backendURL),
            row(readKeyDevices),
            row(remoteDesktopToken),
            row(trayMissingTold),
            row(usersInputMethod)};
}

} // namespace lorvane::preference
