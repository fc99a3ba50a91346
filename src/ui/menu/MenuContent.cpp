// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/MenuContent.h"

namespace lorvane {

namespace {

using Kind = MenuEntry::Kind;

MenuEntry divider() { return {}; }

MenuEntry action(const QString& id, const QString& title) { return {Kind::action, id, title, false, {}}; }

MenuEntry picker(const QString& id, const QString& title, std::vector<MenuChoice> choices,
                 const QString& selected) {
    for (MenuChoice& choice : choices) {
        choice.isChosen = choice.value == selected;
    }
    return {Kind::picker, id, title, false, std::move(choices)};
}

MenuEntry translationPicker(const MenuState& state, const Localisation& words) {
    std::vector<MenuChoice> choices{{QString(), words.text("Off")}};
    for (const Language& language : translationLanguages()) {
        choices.push_back({language.code, language.ownName});
    }
    return picker(menu::translateTo, words.text("Translate to"), std::move(choices), state.translateLang);
}

MenuEntry languagePicker(const MenuState& state, const Localisation& words) {
    std::vector<MenuChoice> choices{{QString(), words.text("Auto")}};
    for (const char* code : {"ru", "en"}) {
        choices.push_back({QString::fromLatin1(code), ownNameOf(QString::fromLatin1(code))});
    }
    return picker(menu::language, words.text("Language"), std::move(choices), state.speakLang);
}

MenuEntry microphonePicker(const MenuState& state, const Localisation& words) {
    std::vector<MenuChoice> choices{{QString(), words.text("Auto-detect")}};
    for (const MacInputDevice& device : state.inputs) {
        choices.push_back({device.uid, device.name});
    }
    return picker(menu::microphone, words.text("Microphone"), std::move(choices), state.inputUID);
}

MenuEntry hotkeyPicker(const MenuState& state, const Localisation& words) {
    std::vector<MenuChoice> choices;
    for (const Hotkey key : allHotkeys) {
        choices.push_back({QString(rawName(key)), label(key, words)});
    }
    return picker(menu::hotkey, words.text("Hotkey"), std::move(choices), QString(rawName(state.hotkey)));
}

/// What is there only while something asks for it.
std::vector<MenuEntry> head(const MenuState& state, const Localisation& words,
                            const LanguageNames& languages) {
    std::vector<MenuEntry> entries;
    if (state.availableUpdate) {
        entries.push_back(
            action(menu::update, words.text("Update to Lorvane %1").arg(*state.availableUpdate)));
        entries.push_back(divider());
    }
    if (!state.permissionsGranted) {
        entries.push_back(action(menu::enableAccessibility, words.text("Enable Accessibility…")));
        entries.push_back(divider());
    }
    if (!state.translateLang.isEmpty()) {
        const QString text = words.text("Translating → %1").arg(languages.displayName(state.translateLang));
        entries.push_back({Kind::text, {}, text, false, {}});
    }
    return entries;
}

} // namespace

std::vector<MenuEntry> menuContent(const MenuState& state, const Localisation& words,
                                   const LanguageNames& languages) {
    std::vector<MenuEntry> entries = head(state, words, languages);
    entries.push_back(action(menu::open, words.text("Open Lorvane")));
    entries.push_back(divider());
    entries.push_back(translationPicker(state, words));
    entries.push_back(languagePicker(state, words));
    entries.push_back(microphonePicker(state, words));
    entries.push_back(action(menu::copyLast, words.text("Copy last transcript")));
    entries.push_back({Kind::toggle, menu::typingTips, words.text("Typing tips"), state.nudgesOn, {}});
    entries.push_back(divider());
    entries.push_back(hotkeyPicker(state, words));
    entries.push_back(divider());
    entries.push_back(action(menu::checkForUpdates, words.text("Check for Updates…")));
    entries.push_back(action(menu::sendFeedback, words.text("Send feedback")));
    entries.push_back(action(menu::quit, words.text("Quit Lorvane")));
    return entries;
}

} // namespace lorvane
