// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/DictationController.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

namespace {

/// For the log; the labels stay the same whatever keys are chosen.
QString labelOf(Source source) {
    return source == Source::hold ? QStringLiteral("hold (right ⌘)") : QStringLiteral("hands-free (right ⌥)");
}

} // namespace

DictationController::DictationController(const Foundation& foundation, DictationStatus& status,
                                         ScreenPresence& screen, GestureKeys& keys, TakeCapture& capture,
                                         TakeDelivery& delivery)
    : foundation_(foundation), status_(status), screen_(screen), keys_(keys), capture_(capture),
      delivery_(delivery) {
    phaseObserver_ =
        status_.phase.subscribe([this](const Phase&) { keys_.watchEscape(isTakeAlive(phase())); });
}

void DictationController::start(TaskBody firstExchange) {
    screen_.windows().applyAppearance(foundation_.preferences.get(preference::appearance));
    status_.watchPermissions([this] {
        keys_.start();
        screen_.showPill();
    });
    keys_.wire(gestureActions());
    status_.recheckPermissions();
    if (foundation_.preferences.get(preference::onboarded)) {
        keys_.start();
        screen_.showPill();
        if (foundation_.preferences.get(preference::openWindowAtLaunch)) {
            openHomeWindow();
        }
    } else {
        presentOnboarding();
    }
    if (firstExchange) {
        background_.start(std::move(firstExchange));
    }
}

GestureActions DictationController::gestureActions() {
    GestureActions actions;
    actions.holdBegan = [this] { holdBegan(); };
    actions.holdEnded = [this](bool wasTap) { holdEnded(wasTap); };
    actions.interrupted = [this] {
        ignoreNextRelease_ = false; // an interrupted hold has no release to ignore
        cancelRecording();
    };
    actions.toggled = [this] { toggled(); };
    actions.escaped = [this] { escaped(); };
    return actions;
}

void DictationController::holdBegan() {
    if (isIn<Recording>(phase()) && source_ == Source::toggle) {
        ignoreNextRelease_ = true;
        stopDictation();
    } else {
        startDictation(Source::hold);
    }
}

void DictationController::holdEnded(bool wasTap) {
    if (ignoreNextRelease_) {
        ignoreNextRelease_ = false;
        return;
    }
    if (!isIn<Recording>(phase()) || source_ != Source::hold) {
        return;
    }
    if (wasTap) {
        cancelRecording();
    } else {
        stopDictation();
    }
}

void DictationController::toggled() {
    if (isIn<Recording>(phase())) {
        stopDictation();
    } else {
        startDictation(Source::toggle);
    }
}

void DictationController::escaped() {
    if (isIn<Processing>(phase())) {
        foundation_.log.diagLog(QStringLiteral("[tirra-dictate] cancelled by Escape while processing"));
        cancelProcessing();
    } else if (isIn<Recording>(phase())) {
        foundation_.log.diagLog(QStringLiteral("[tirra-dictate] cancelled by Escape while recording"));
        cancelRecording();
    }
}

void DictationController::startDictation(Source source) {
    if (!isIn<Idle>(phase()) && !isIn<Done>(phase())) {
        return;
    }
    status_.cancelHide();
    const auto started = capture_.begin();
    if (!started) {
        showStartFailure(started.error());
        return;
    }
    source_ = source;
    status_.phase.set(Recording{});
    status_.refreshPill();
    armRecordLimit();
}

void DictationController::showStartFailure(const MacRecorder::StartFailure& failure) {
    using Kind = MacRecorder::StartFailure::Kind;
    // The sound server has no question to put to the user, so access is not asked for here.
    const auto text = [&] {
        switch (failure.kind) {
        case Kind::denied:
            return foundation_.words.text("Allow microphone access, then try again");
        case Kind::noInput:
            return foundation_.words.text("No microphone on the selected input — check Sound settings");
        case Kind::engine:
            break;
        }
        return foundation_.words.text("Couldn't start the microphone. Try again.");
    }();
    status_.showNotice(text, NoticeSeverity::warning);
}

void DictationController::armRecordLimit() {
    limit_.reset();
    const int limit = foundation_.preferences.get(preference::recordLimit);
    if (limit <= 0) {
        return;
    }
    limit_ = foundation_.clock.after(seconds(limit), [this] {
        if (!isIn<Recording>(phase())) {
            return;
        }
        // In this order on purpose: the notice takes the phase, so the capture runs on, and the take that is
        // started next holds what was said since capture began.
        status_.showNotice(foundation_.words.text("Recording limit reached"), NoticeSeverity::warning);
        stopDictation();
    });
}

void DictationController::stopDictation() {
    limit_.reset();
    if (!isIn<Recording>(phase())) {
        return;
    }
    if (!capture_.isWorthSending()) {
        dropTake();
        return;
    }
    foundation_.log.diagLog(QStringLiteral("[tirra-dictate] take by %1, %2s")
                                .arg(labelOf(source_), QString::number(capture_.seconds(), 'f', 1)));
    FinishedTake take = capture_.finish();
    if (take.isNothing()) {
        status_.showNotice(foundation_.words.text("Didn't catch that"), NoticeSeverity::warning);
        capture_.clearParts();
        return;
    }
    status_.phase.set(Processing{});
    background_.adopt(std::move(process_)); // one that still finishes its paste is only replaced
    process_ = startTask([this, take](TaskScope scope) { return process(take, std::move(scope)); });
}

void DictationController::toggleDictation() {
    if (isIn<Idle>(phase()) || isIn<Done>(phase())) {
        startDictation(Source::toggle);
    } else if (isIn<Recording>(phase())) {
        stopDictation();
    }
}

void DictationController::cancelRecording() {
    limit_.reset();
    if (isIn<Recording>(phase())) {
        dropTake();
    }
}

void DictationController::dropTake() {
    capture_.discard();
    status_.phase.set(Idle{});
    status_.refreshPill();
}

QCoro::Task<void> DictationController::process(FinishedTake take, TaskScope scope) {
    co_await delivery_.deliverTake(take, 0, scope);
    if (!scope.isCancelled()) {
        endDelivery();
    }
}

/// A cancelled delivery is ended by its canceller: by the time its last step is over, the next take may be
/// running.
void DictationController::endDelivery() {
    status_.isTranslating.set(false);
    capture_.clearParts();
    delivery_.endTyping();
}

void DictationController::cancelProcessing() {
    if (!isIn<Processing>(phase())) {
        return;
    }
    TaskHandle ending = std::move(process_);
    ending.cancel();
    background_.adopt(std::move(ending));
    endDelivery();
    background_.start([this](TaskScope scope) {
        return delivery_.abandonTyping(QStringLiteral("cancelled"), std::move(scope));
    });
    status_.phase.set(Idle{});
    status_.refreshPill();
}

void DictationController::recheckPermissions() {
    if (status_.recheckPermissions()) {
        keys_.start();
    }
}

void DictationController::copyLastTranscript() {
    if (!lastText().isEmpty()) {
        delivery_.copy(lastText());
    }
}

void DictationController::finishOnboarding() {
    screen_.closeOnboarding();
    if (status_.recheckPermissions()) {
        keys_.start();
        screen_.showPill();
    }
    openHomeWindow();
}

} // namespace lorvane
