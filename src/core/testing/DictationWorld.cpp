// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <algorithm>

namespace lorvane {

DictationWorld::DictationWorld() {
    preferences.set(preference::onboarded, true);
    workspace.front = RunningApplication{editor, "Editor", "org.example.Editor"};
    backend.otherwise = FakeDictationEndpoints::text("Hello there.");
    fields.field("body").text.reset();
    keysWay.lineBreaks = false;
    pasteKeys.onPosted = [this] {
        pasted.append(pasteboard.pasteInto(editor).value_or(QString()));
        if (fields.field("body").text) {
            field.paste(pasted.back());
        }
    };
    phaseRecord = controller.subscribePhase([this](const Phase& phase) { phases.push_back(phase); });
}

void DictationWorld::speak(double duration) {
    constexpr double piece = 0.05;
    while (duration > 0) {
        const double step = std::min(piece, duration);
        clock.advance(seconds(step));
        engines.engine().deliver(0.5F, static_cast<std::size_t>(step * 48'000));
        duration -= step;
    }
}

void DictationWorld::holdFor(double duration) {
    keyboard.press(keys.hotkey());
    speak(duration);
    keyboard.release(keys.hotkey());
}

void DictationWorld::tapToggle() {
    keyboard.press(*keys.toggleHotkey());
    clock.advance(seconds(0.1));
    keyboard.release(*keys.toggleHotkey());
}

void DictationWorld::showField(const QString& text, std::optional<qint64> caret) {
    field.setText(text, caret.value_or(text.size()));
}

void DictationWorld::escape() {
    keyboard.keyDown(keyCode::escape);
    clock.settle();
}

QString DictationWorld::notice() const {
    const auto* const shown = std::get_if<Notice>(&phase());
    if (shown == nullptr) {
        return {};
    }
    return (shown->severity == NoticeSeverity::error ? QString("error: ") : QString()) + shown->text;
}

bool DictationWorld::isWatchingEscape() const {
    constexpr std::size_t gestureMonitors = 3;
    return keyboard.monitorCount() == (keys.isRunning() ? gestureMonitors : 0) + 2;
}

} // namespace lorvane
