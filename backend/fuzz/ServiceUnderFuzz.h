// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ClientAddress.h"
#include "api/Dictation.h"
#include "api/Metrics.h"
#include "api/ReleaseFeed.h"
#include "api/RouteTable.h"
#include "api/Services.h"
#include "api/TakeMemory.h"
#include "api/TokenCache.h"
#include "fuzz/Scene.h"
#include "language/Linguist.h"
#include "mail/Mailer.h"
#include "storage/SqliteStorage.h"

#include <optional>
#include <string>
#include <vector>

namespace lorvane::backend::fuzz {

// Takes every letter.
class KeptLetters : public Mailer {
 public:
    void send(const Letter& letter) override { letters.push_back(letter); }
    std::vector<Letter> letters;
};

// Hears what it is told to.
class ToldEngine : public Engine {
 public:
    std::string_view name() const override { return "told"; }
    bool speaks(std::string_view language) const override { return language.empty() || language == "en"; }
    bool mayBePlain(std::string_view) const override { return true; }
    void warmUp() override {}
    Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                          std::stop_token stop) override;
    std::vector<std::string> segments;
};

// How one request was answered.
struct Answered {
    std::string_view route; // its path; empty without any
    int status = 0;
    std::string contentType;
    std::string body;
    std::vector<std::string> lines;
    std::string notes;
};

// The routes with all that stands behind them, but for the sockets: a store in memory, an engine that is told
// what it hears, no language server and no mail server. Two devices are registered.
class ServiceUnderFuzz {
 public:
    static const std::string tokenOne;
    static const std::string tokenTwo;

    ServiceUnderFuzz();
    // As a connection does, from the head to the handler.
    Answered answer(const ScriptedRequest& request);
    std::vector<Letter> takeLetters();
    bool knows(const std::string& token) { return storage_.deviceOfToken(sha256(token)).has_value(); }

 private:
    std::optional<DeviceId> deviceOf(std::string_view bearer);

    std::chrono::system_clock::time_point now_{std::chrono::hours(24 * 365 * 55)};
    SqliteStorage storage_{":memory:", [this] { return now_; }};
    ToldEngine engine_;
    TakeMemory memory_;
    const Linguist linguist_{{}, {}};
    const Dictation dictation_;
    KeptLetters mailer_;
    const ReleaseFeed releases_{{}};
    Metrics metrics_;
    ReferralCodes codes_{100};
    TokenCache tokens_;
    const TrustedProxies proxies_;
    const Services services_;
    const RouteTable routes_;
};

} // namespace lorvane::backend::fuzz
