// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"
#include "util/ShortMemory.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace lorvane::backend {

class Dictation;
class Linguist;
class Mailer;
class Metrics;
class ReleaseFeed;

// Of a person, but for the registrations: those of everybody together, and those from one address.
struct Limits {
    Rate registrations = Rate::perHour(3600);
    Rate registrationsOfAddress = Rate::perHour(120);
    Rate invitations = Rate::perHour(20);
    Rate feedback = Rate::perHour(20);
    Rate texts = Rate::perHour(240); // insights, summaries, translations
    Rate takes;
};

struct ServiceOptions {
    std::size_t takeLimit = std::size_t(64) << 20; // bytes of a take's body
    Limits limits;
    std::int64_t phoneGoal = 200; // words dictated on a telephone that make a day count; 0: no such record
    std::string publicUrl;        // of this service, without a slash at its end; empty: letters hold no link
    std::string downloadUrl;      // where /get leads to; empty: nowhere
    std::string mailFrom = "lorvane@localhost";
    std::string feedbackTo = "lorvane@localhost";
};

// Of the devices that asked lately.
using ReferralCodes = ShortMemory<DeviceId, std::string>;

// What the handlers work with. All of it outlives the server.
struct Services {
    ServiceOptions options;
    Storage& storage;
    const Dictation& dictation;
    const Linguist& linguist;
    Mailer& mailer;
    const ReleaseFeed& releases;
    Metrics& metrics;
    ReferralCodes& codes;
    std::function<std::string_view()> unready; // why requests should go elsewhere; empty when they may come
};

} // namespace lorvane::backend
