// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Task.h"
#include "core/DictationStatus.h"
#include "core/GestureKeys.h"
#include "core/ScreenPresence.h"
#include "core/TakeCapture.h"
#include "core/TakeDelivery.h"

#include <functional>
#include <optional>

namespace lorvane {

/// The coordinator of a dictation: which gesture starts and ends a take, and what happens when. Lives as long
/// as the program. Main thread; nothing here fails to its caller.
class DictationController {
 public:
    DictationController(const Foundation& foundation, DictationStatus& status, ScreenPresence& screen,
                        GestureKeys& keys, TakeCapture& capture, TakeDelivery& delivery);
    DictationController(const DictationController&) = delete;
    DictationController& operator=(const DictationController&) = delete;

    /// Once, when the program has started. `firstExchange` is the first talk with the backend.
    void start(TaskBody firstExchange);

    /// From idle or done only: a message on screen keeps a new take from starting until it has hidden.
    void startDictation(Source source);
    /// The user ended the take. Does nothing unless recording.
    void stopDictation();
    /// Throws the take away while it is recorded.
    void cancelRecording();
    /// Gives a take up that is on its way.
    void cancelProcessing();
    /// What the controls on screen do: starts a hands-free take, or ends the one that is recorded.
    void toggleDictation();

    void setHotkey(Hotkey key) { keys_.setHotkey(key); }
    void setToggleHotkey(std::optional<Hotkey> key) { keys_.setToggleHotkey(key); }
    [[nodiscard]] Hotkey hotkey() const { return keys_.hotkey(); }
    [[nodiscard]] std::optional<Hotkey> toggleHotkey() const { return keys_.toggleHotkey(); }

    [[nodiscard]] const Phase& phase() const { return status_.phase.get(); }
    [[nodiscard]] bool permissionsGranted() const { return status_.permissionsGranted.get(); }
    [[nodiscard]] const QString& lastText() const { return status_.lastText.get(); }
    [[nodiscard]] bool isTranslating() const { return status_.isTranslating.get(); }
    [[nodiscard]] Handle subscribePhase(std::function<void(const Phase&)> observer) {
        return status_.phase.subscribe(std::move(observer));
    }
    [[nodiscard]] Handle subscribePermissionsGranted(std::function<void(const bool&)> observer) {
        return status_.permissionsGranted.subscribe(std::move(observer));
    }

    void recheckPermissions();
    void copyLastTranscript();
    /// Keeps the idle pill away for so long.
    void hideBar(Duration duration) { screen_.hideBar(duration); }
    void openHomeWindow() { screen_.windows().openHomeWindow(); }
    void presentOnboarding() { screen_.presentOnboarding(); }
    void finishOnboarding();
    void openFeedback(const QString& context) { screen_.windows().openFeedback(context); }
    void openWhatsNew() { screen_.windows().openWhatsNew(); }

 private:
    [[nodiscard]] GestureActions gestureActions();
    void holdBegan();
    void holdEnded(bool wasTap);
    void toggled();
    void escaped();
    void showStartFailure(const MacRecorder::StartFailure& failure);
    void armRecordLimit();
    void dropTake();
    QCoro::Task<void> process(FinishedTake take, TaskScope scope);
    void endDelivery();

    const Foundation foundation_;
    DictationStatus& status_;
    ScreenPresence& screen_;
    GestureKeys& keys_;
    TakeCapture& capture_;
    TakeDelivery& delivery_;

    Source source_ = Source::hold;
    /// The next release of the hold key does nothing.
    bool ignoreNextRelease_ = false;
    Handle limit_;
    Handle phaseObserver_;
    /// Deliveries that were given up, as far as a paste under way goes on, and the first exchange.
    TaskGroup background_;
    TaskHandle process_;
};

} // namespace lorvane
