// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/EndpointURLs.h"

namespace lorvane {

EndpointURLs endpointURLs(const QUrl& base) {
    if (!base.isValid() || base.host().isEmpty()) {
        return {};
    }
    const auto at = [&base](const char* path) {
        QUrl url = base.adjusted(QUrl::StripTrailingSlash | QUrl::RemoveQuery | QUrl::RemoveFragment);
        QString folder = url.path();
        while (folder.endsWith(u'/')) {
            folder.chop(1);
        }
        url.setPath(folder + QLatin1String(path));
        return url;
    };
    return {
        .dictateURL = at("/api/dictate"),
        .dictateStreamURL = at("/api/dictate-stream"),
        .transcribePartURL = at("/api/transcribe-part"),
        .registerURL = at("/api/register"),
        .onboardedURL = at("/api/onboarded"),
        .linkURL = at("/api/link"),
        .referralURL = at("/api/referral"),
        .inviteURL = at("/api/invite"),
        .insightsURL = at("/api/insights"),
        .summaryURL = at("/api/summary"),
        .translateURL = at("/api/translate"),
        .feedbackURL = at("/api/feedback"),
    };
}

} // namespace lorvane
