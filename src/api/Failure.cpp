// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Failure.h"

namespace lorvane {

namespace {

QString noTokenDescription(std::optional<RegistrationFailure> reason, const Localisation& words) {
    switch (reason.value_or(RegistrationFailure::offline)) {
    case RegistrationFailure::refused:
        return words.text(
            QStringLiteral("Lorvane couldn't finish setting up on this Mac. Please try again — and "
                           "if it keeps happening, get in touch and we'll sort it out."));
    case RegistrationFailure::busy:
        return words.text(QStringLiteral(
            "Lorvane is setting up a lot of new devices right now. Please try again a little later."));
    case RegistrationFailure::offline:
        break;
    }
    return words.text(QStringLiteral("Couldn't connect to Lorvane. Check your internet."));
}

} // namespace

QString errorDescription(const Failure& failure, const Localisation& words) {
    switch (failure.kind) {
    case Failure::Kind::noToken:
        return noTokenDescription(failure.reason, words);
    case Failure::Kind::noSpeech:
        return words.text(QStringLiteral("Didn't catch any speech — try again."));
    case Failure::Kind::tooManyRequests:
        return words.text(QStringLiteral("Too many dictations right now. Please try again later."));
    case Failure::Kind::tooLong:
        return words.text(QStringLiteral("That recording is too long to send in one go. Try shorter takes."));
    case Failure::Kind::server:
        break;
    }
    return words.text(QStringLiteral("Lorvane had a hiccup. Please try again."));
}

} // namespace lorvane
