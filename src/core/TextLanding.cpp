// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TextLanding.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

TextLanding::TextLanding(const Foundation& foundation, DictationStatus& status, Accessibility& accessibility,
                         LiveTyping& typing, TextInsertion& insertion, Chime& chime)
    : foundation_(foundation), status_(status), accessibility_(accessibility), typing_(typing),
      insertion_(insertion), chime_(chime) {
    insertion_.onUnanswered = [this] { showUnanswered(); };
}

QCoro::Task<void> TextLanding::land(QString text, TaskScope scope) {
    if (!accessibility_.isTrusted()) {
        copyWithoutAccessibility(text);
        co_return;
    }
    insertion_.answered();
    const SettleOutcome settled = co_await typing_.settleTyping(text, scope);
    if (settled == SettleOutcome::landed) {
        insertion_.typed();
    }
    if (settled == SettleOutcome::paste) {
        const PasteOutcome outcome = co_await insertion_.pasteText(text, scope);
        if (!scope.isCancelled()) {
            showPasted(text, outcome);
        }
        co_return;
    }
    if (scope.isCancelled()) {
        co_return;
    }
    if (settled == SettleOutcome::landed) {
        status_.showPhase(Done{}, briefly);
    } else {
        handOver(text);
    }
}

void TextLanding::copyWithoutAccessibility(const QString& text) {
    status_.permissionsGranted.set(false);
    insertion_.handOver(text);
    status_.showNotice(foundation_.words.text("Copied — enable Accessibility to auto-paste"),
                       NoticeSeverity::warning);
    if (!didPromptAX_) {
        didPromptAX_ = true;
        accessibility_.openAccessibilitySettings();
    }
}

void TextLanding::handOver(const QString& text) {
    insertion_.handOver(text);
    status_.showNotice(foundation_.words.text("Copied — press ⌘V"), NoticeSeverity::warning);
}

void TextLanding::showPasted(const QString& text, const PasteOutcome& outcome) {
    switch (outcome.kind) {
    case PasteOutcome::Kind::ok:
        status_.showPhase(Done{}, briefly);
        if (foundation_.preferences.get(preference::soundOn)) {
            chime_.play();
        }
        return;
    case PasteOutcome::Kind::secure:
        status_.showNotice(foundation_.words.text("Secure field — not inserted"), NoticeSeverity::warning);
        return;
    case PasteOutcome::Kind::failed:
        handOver(text);
        return;
    }
}

void TextLanding::showUnanswered() {
    const Phase& phase = status_.phase.get();
    if (isIn<Idle>(phase) || isIn<Done>(phase)) { // never over a take that is running
        status_.showNotice(foundation_.words.text("Copied — press ⌘V"), NoticeSeverity::warning);
    }
}

} // namespace lorvane
