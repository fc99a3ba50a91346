// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QUrl>

namespace lorvane {

/// Where the backend's operations are. All empty until the backend's address is known.
struct EndpointURLs {
    QUrl dictateURL;
    QUrl dictateStreamURL;
    QUrl transcribePartURL;
    QUrl registerURL;
    QUrl onboardedURL;
    QUrl linkURL;
    QUrl referralURL;
    QUrl inviteURL;
    QUrl insightsURL;
    QUrl summaryURL;
    QUrl translateURL;
    QUrl feedbackURL;
};

/// `base`: scheme, host and port, with or without a path of its own and a slash at its end.
[[nodiscard]] EndpointURLs endpointURLs(const QUrl& base);

namespace requestTimeout {
inline constexpr Duration dictation = seconds(240);
inline constexpr Duration part = seconds(20);
inline constexpr Duration registration = seconds(15);
} // namespace requestTimeout

} // namespace lorvane
