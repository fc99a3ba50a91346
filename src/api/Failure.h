// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"

#include <optional>

namespace lorvane {

enum class RegistrationFailure { offline, refused, busy };

/// What the backend, or the lack of a token, says about a request.
struct Failure {
    enum class Kind { noToken, noSpeech, server, tooManyRequests, tooLong };
    Kind kind = Kind::server;
    /// Only with `noToken`.
    std::optional<RegistrationFailure> reason = std::nullopt;

    friend bool operator==(const Failure&, const Failure&) = default;
};

/// The words for the user.
[[nodiscard]] QString errorDescription(const Failure& failure, const Localisation& words);

} // namespace lorvane
