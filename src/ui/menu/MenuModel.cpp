// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/MenuModel.h"

#include "base/PreferenceCatalogue.h"

#include <algorithm>

namespace lorvane {

MenuModel::MenuModel(const Foundation& foundation, const LanguageNames& languages, MenuTargets targets)
    : foundation_(foundation), languages_(languages), targets_(std::move(targets)), actions_(makeActions()) {
    observe();
    entries_ = menuContent(state(), foundation_.words, languages_);
}

MenuState MenuModel::state() const {
    const Preferences& preferences = foundation_.preferences;
    return {targets_.updates.available(),
            targets_.controller.permissionsGranted(),
            preferences.get(preference::translateLang),
            preferences.get(preference::speakLang),
            preferences.get(preference::inputUID),
            preferences.get(preference::nudges),
            targets_.devices.inputs(),
            targets_.controller.hotkey()};
}

QHash<QString, std::function<void(const QString&)>> MenuModel::makeActions() {
    Preferences& preferences = foundation_.preferences;
    const auto storing = [&preferences](const PreferenceKey<QString>& key) {
        return [&preferences, &key](const QString& value) { preferences.set(key, value); };
    };
    return {
        {menu::update, [this](const QString&) { targets_.updates.checkForUpdates(); }},
        {menu::enableAccessibility, [this](const QString&) { targets_.openAccessibilitySettings(); }},
        {menu::open, [this](const QString&) { targets_.controller.openHomeWindow(); }},
        {menu::translateTo, storing(preference::translateLang)},
        {menu::language, storing(preference::speakLang)},
        {menu::microphone, storing(preference::inputUID)},
        {menu::copyLast, [this](const QString&) { targets_.controller.copyLastTranscript(); }},
        {menu::typingTips,
         [&preferences](const QString&) {
             preferences.set(preference::nudges, !preferences.get(preference::nudges));
         }},
        {menu::hotkey,
         [this](const QString& value) {
             if (const auto key = hotkeyFromRawName(value)) {
                 targets_.controller.setHotkey(*key);
             }
         }},
        {menu::checkForUpdates, [this](const QString&) { targets_.updates.checkForUpdates(); }},
        {menu::sendFeedback, [this](const QString&) { targets_.controller.openFeedback({}); }},
        {menu::quit, [this](const QString&) { targets_.quit(); }},
    };
}

void MenuModel::observe() {
    Preferences& preferences = foundation_.preferences;
    const auto changed = [this] { refresh(); };
    subscriptions_.push_back(targets_.updates.subscribeAvailable(changed));
    subscriptions_.push_back(
        targets_.controller.subscribePermissionsGranted([this](const bool&) { refresh(); }));
    for (const auto* key :
         {&preference::translateLang, &preference::speakLang, &preference::inputUID, &preference::hotkey}) {
        subscriptions_.push_back(preferences.subscribe(*key, changed));
    }
    subscriptions_.push_back(preferences.subscribe(preference::nudges, changed));
    subscriptions_.push_back(
        targets_.devices.subscribeInputs([this](const std::vector<MacInputDevice>&) { refresh(); }));
}

void MenuModel::refresh() {
    auto entries = menuContent(state(), foundation_.words, languages_);
    if (entries != entries_) {
        entries_ = std::move(entries);
        changed_.emit();
    }
}

void MenuModel::activate(const QString& id, const QString& value) {
    const bool isThere =
        std::any_of(entries_.begin(), entries_.end(), [&](const MenuEntry& entry) { return entry.id == id; });
    if (const auto action = actions_.value(id); isThere && action) {
        action(value);
    }
}

} // namespace lorvane
