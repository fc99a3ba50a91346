// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupPlan.h"

#include "app/setup/DesktopEntry.h"

namespace lorvane {

namespace {

const QString devicesWarning =
    QStringLiteral("Whoever may read key devices may read everything that is typed, in every program. "
                   "Lorvane looks for its own keys only and keeps nothing else.");

SetupPlan nothingToDo(const QString& why) {
    SetupPlan plan;
    plan.told = {why};
    return plan;
}

SetupPlan planDevices(const SetupFacts& facts, const Localisation& words) {
    SetupPlan plan;
    plan.switchesDevicesOn = true;
    plan.told = {words.text(QStringLiteral("Lorvane will read its key straight from the keyboards.")),
                 // words: setup.devices.warning
                 words.text(QStringLiteral("setup.devices.warning"), devicesWarning)};
    if (!facts.mayReadDevices) {
        plan.afterwards = {
            words.text(QStringLiteral("This user may not read key devices yet. Allow it with this command, "
                                      "then log out and in again:")),
            QStringLiteral("    sudo usermod -aG input %1").arg(facts.userName)};
    }
    return plan;
}

SetupPlan planShellExtension(const SetupFacts& facts, const Localisation& words) {
    if (facts.isShellExtensionForNextLogin) {
        return nothingToDo(words.text(QStringLiteral(
            "The extension is in place, but the Shell that runs has not loaded it. Log out and in again.")));
    }
    if (facts.isShellExtensionInPlace) {
        return nothingToDo(words.text(QStringLiteral("Nothing is missing: the extension is in place.")));
    }
    if (!facts.hasShellExtension) {
        return nothingToDo(
            words.text(QStringLiteral("There is no extension for this version of the GNOME Shell.")));
    }
    SetupPlan plan;
    plan.placesShellExtension = true;
    plan.told = {
        facts.isShellExtensionOutdated
            ? words.text(QStringLiteral("Your GNOME Shell has an older version of Lorvane's small extension. "
                                        "The present one will take its place."))
            : words.text(QStringLiteral("Lorvane will add its small extension to your GNOME Shell.")),
        words.text(QStringLiteral("It tells Lorvane, and nobody else, when the chosen key goes down and up, "
                                  "and which application has the keyboard, so that terminals get the keys "
                                  "by which they paste."))};
    plan.afterwards = {words.text(QStringLiteral("Log out and in again: the Shell loads it then."))};
    return plan;
}

QStringList kwinLooksAgain() {
    return {QStringLiteral("dbus-send"),
            QStringLiteral("--session"),
            QStringLiteral("--type=method_call"),
            QStringLiteral("--dest=org.kde.KWin"),
            QStringLiteral("/KWin"),
            QStringLiteral("org.kde.KWin.reconfigure")};
}

// As KDE's settings tell of a change: a dictionary of groups and keys, the names as bytes without an end.
// KWin reads some keys anew only then, and Lorvane, if it runs, hears of it too.
QStringList kwinHearsOf(const SetupKey& key) {
    QStringList bytes;
    for (const char byte : key.key) {
        bytes.append(
            QStringLiteral("0x%1").arg(static_cast<unsigned char>(byte), 0, 16)); // NOLINT(*-magic-numbers)
    }
    return {QStringLiteral("gdbus"),
            QStringLiteral("emit"),
            QStringLiteral("--session"),
            QStringLiteral("--object-path"),
            QStringLiteral("/kwinrc"),
            QStringLiteral("--signal"),
            QStringLiteral("org.kde.kconfig.notify.ConfigChanged"),
            QStringLiteral("{'%1': [[byte %2]]}")
                .arg(QString::fromUtf8(key.group), bytes.join(QLatin1Char(',')))};
}

SetupPlan planModifierSight(const SetupFacts& facts, const Localisation& words) {
    if (facts.showsModifiers) {
        return nothingToDo(words.text(QStringLiteral(
            "Nothing is missing: Ctrl, Alt and Shift can be held, and left and right are told apart.")));
    }
    if (!facts.hasX) {
        return nothingToDo(words.text(QStringLiteral(
            "Nothing is missing: Ctrl, Alt and Shift can be held as it is. Left and right are not told "
            "apart; "
            "to have that, let Lorvane read the keyboards: lorvane setup hold --key-devices")));
    }
    SetupPlan plan;
    plan.told = {
        words.text(QStringLiteral("Ctrl, Alt and Shift can be held as it is, but left and right are not told "
                                  "apart, and a tap of one starts nothing.")),
        words.text(QStringLiteral("KWin will show programs of X11, Lorvane among them, when Ctrl, Alt and "
                                  "Shift go down and up, and "
                                  "nothing else that is typed (System Settings, Legacy X11 App Support)."))};
    plan.keys = {
        {facts.configFolder + QStringLiteral("/kwinrc"), "Xwayland", "XwaylandEavesdrops", "Modifiers"}};
    plan.refreshes = {kwinLooksAgain(), kwinHearsOf(plan.keys.front())};
    plan.afterwards = {words.text(QStringLiteral("It is in force at once, no new login is needed."))};
    return plan;
}

SetupPlan planHold(const SetupFacts& facts, const Localisation& words) {
    if (facts.keyDevices) {
        return planDevices(facts, words);
    }
    switch (facts.desktop) {
    case SetupDesktop::x11:
        return nothingToDo(words.text(QStringLiteral("Nothing is missing: every key can be held here.")));
    case SetupDesktop::sway:
        return nothingToDo(words.text(
            QStringLiteral("Nothing is missing: Lorvane binds its key itself while it runs, and leaves your "
                           "configuration alone.")));
    case SetupDesktop::gnome:
        return planShellExtension(facts, words);
    case SetupDesktop::kde:
        return planModifierSight(facts, words);
    default:
        return nothingToDo(words.text(QStringLiteral(
            "This desktop shows no held keys of its own accord. Either bind start, stop and toggle as below, "
            "or let Lorvane read the keyboards: lorvane setup hold --key-devices")));
    }
}

// A package brings entries that name its programs; what runs from elsewhere needs some of its own.
SetupPlan planKdeTyping(const SetupFacts& facts, const Localisation& words) {
    SetupPlan plan;
    const QString folder = facts.dataFolder + QStringLiteral("/applications/com.ostrand.tirra.");
    QString entry = facts.inputMethodEntry;
    if (entry.isEmpty()) {
        plan.told = {
            words.text(QStringLiteral("Lorvane will be allowed to press keys, so that it can paste."))};
        plan.files.push_back({folder + QStringLiteral("kwin.desktop"),
                              hiddenDesktopEntry(QStringLiteral("Lorvane"), facts.program,
                                                 "X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input,"
                                                 "org_kde_plasma_window_management")});
        plan.refreshes = {{QStringLiteral("kbuildsycoca6")}, {QStringLiteral("kbuildsycoca5")}};
        plan.afterwards = {
            words.text(QStringLiteral("Start Lorvane again: it is known to the desktop then."))};
    }
    if (entry.isEmpty() && !facts.inputMethod.isEmpty()) {
        entry = folder + QStringLiteral("inputmethod.desktop");
        plan.files.push_back({entry, hiddenDesktopEntry(QStringLiteral("Lorvane"), facts.inputMethod,
                                                        "X-KDE-Wayland-VirtualKeyboard=true")});
    }
    if (!entry.isEmpty()) {
        plan.keys.push_back(
            {facts.configFolder + QStringLiteral("/kwinrc"), "Wayland", "InputMethod", entry.toUtf8()});
        plan.told.append(words.text(
            QStringLiteral("Lorvane will become the virtual keyboard (System Settings, Virtual Keyboard), so "
                           "that it can type into browsers. It takes the place of any other input method.")));
    }
    plan.refreshes.push_back(kwinLooksAgain());
    plan.refreshes.push_back(kwinHearsOf({{}, "Wayland", "InputMethod", {}}));
    return plan;
}

bool isKdeTypingSetUp(const SetupFacts& facts) {
    return facts.chosenInputMethod.endsWith(QStringLiteral("/com.ostrand.tirra.inputmethod.desktop"));
}

SetupPlan planTyping(const SetupFacts& facts, const Localisation& words) {
    switch (facts.desktop) {
    case SetupDesktop::x11:
    case SetupDesktop::sway:
        return nothingToDo(
            words.text(QStringLiteral("Nothing is missing: text can be typed and pasted here.")));
    case SetupDesktop::gnome:
        return nothingToDo(words.text(QStringLiteral("Nothing has to be set: Lorvane types by IBus, which "
                                                     "comes with GNOME, and pastes by the Shell.")));
    case SetupDesktop::kde:
        if (!isKdeTypingSetUp(facts)) {
            return planKdeTyping(facts, words);
        }
        return nothingToDo(
            words.text(QStringLiteral("Nothing is missing: Lorvane is the virtual keyboard.")));
    default:
        break;
    }
    if (!facts.portalPostsKeys) {
        return nothingToDo(words.text(
            QStringLiteral("Nothing can be set: this desktop lets no program post keys by its portal.")));
    }
    SetupPlan plan;
    plan.asksPortal = true;
    plan.told = {words.text(QStringLiteral("Your desktop will ask whether Lorvane may control the keyboard. "
                                           "It is used to paste, and only then."))};
    return plan;
}

} // namespace

bool SetupPlan::changesAnything() const {
    return !files.empty() || !keys.empty() || placesShellExtension || switchesDevicesOn || asksPortal;
}

SetupPlan planSetup(SetupTopic topic, const SetupFacts& facts, const Localisation& words) {
    return topic == SetupTopic::hold ? planHold(facts, words) : planTyping(facts, words);
}

QString bindingLines(SetupDesktop desktop) {
    switch (desktop) {
    case SetupDesktop::gnome:
        return QStringLiteral(
            "Settings, Keyboard, View and Customise Shortcuts, Custom Shortcuts, +\n"
            "  Name: Dictate    Command: lorvane toggle    Shortcut: one with a key that is no modifier\n");
    case SetupDesktop::kde:
        return QStringLiteral("System Settings, Shortcuts, Add Command: lorvane toggle\n");
    case SetupDesktop::sway:
        return QStringLiteral("~/.config/sway/config\n"
                              "  bindsym --no-repeat Pause exec lorvane start\n"
                              "  bindsym --release Pause exec lorvane stop\n"
                              "  bindsym $mod+d exec lorvane toggle\n");
    case SetupDesktop::hyprland:
        return QStringLiteral("~/.config/hypr/hyprland.conf\n"
                              "  bind = , Pause, exec, lorvane start\n"
                              "  bindr = , Pause, exec, lorvane stop\n"
                              "  bind = SUPER, D, exec, lorvane toggle\n");
    case SetupDesktop::niri:
        return QStringLiteral("~/.config/niri/config.kdl, in binds { }\n"
                              "  Mod+D repeat=false { spawn \"lorvane\" \"toggle\"; }\n");
    default:
        return QStringLiteral("Bind keys of your desktop to: lorvane start, lorvane stop, lorvane toggle\n");
    }
}

} // namespace lorvane
