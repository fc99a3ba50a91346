// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/ServiceUnderFuzz.h"

#include "api/HttpText.h"
#include "api/RequestHead.h"
#include "api/Routes.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace lorvane::backend::fuzz {

namespace {

constexpr std::size_t takeLimit = 128 * 1024;
constexpr double longestSeconds = 10;
constexpr std::size_t soundBytes = std::size_t(64) << 20;

ServiceOptions serviceOptions() {
    ServiceOptions options;
    options.takeLimit = takeLimit;
    options.limits = {Rate::perHour(5), Rate::perHour(3), Rate::perHour(2),
                      Rate::perHour(2), Rate::perHour(3), Rate::perHour(3)};
    options.publicUrl = "https://lorvane.example";
    options.downloadUrl = "https://lorvane.example/download";
    return options;
}

// What a handler does with its exchange, and that it does so as it should.
class RecordedExchange : public Exchange {
 public:
    void respond(Response response) override {
        require(answered.status == 0, "there is one answer");
        answered.status = response.status;
        answered.body = std::move(response.body);
        answered.contentType = std::move(response.contentType);
    }
    void startLines() override {
        require(answered.status == 0, "there is one answer");
        answered.status = 200;
        answered.contentType = "application/x-ndjson";
    }
    bool writeLine(std::string line) override {
        require(answered.contentType == "application/x-ndjson", "lines come after their start");
        require(line.find('\n') == std::string::npos, "a line is one line");
        answered.lines.push_back(std::move(line));
        return true;
    }
    std::stop_token stopToken() const override { return {}; }
    void stepAside() override {}
    void note(std::string_view text) override { answered.notes.append(text).append(", "); }

    Answered answered;
};

Answered refused(std::string_view route, int status) {
    return {route, status, "application/json", "{}", {}, {}};
}

} // namespace

const std::string ServiceUnderFuzz::tokenOne(64, 'a');
const std::string ServiceUnderFuzz::tokenTwo(64, 'b');

Recognition ToldEngine::recognise(const RecognitionJob& job, const OnSegment& onSegment, std::stop_token) {
    for (auto i = job.segmentsKnown; i < segments.size(); ++i)
        onSegment({segments[i], std::chrono::milliseconds(i % 2 ? 1600 : 500), i % 3 != 2});
    return {segments.empty() ? Recognition::End::noSpeech : Recognition::End::complete, "learnt", {}};
}

ServiceUnderFuzz::ServiceUnderFuzz()
    : dictation_(storage_, engine_, memory_, linguist_, longestSeconds,
                 std::make_shared<ByteBudget>(soundBytes)),
      tokens_(storage_, std::chrono::seconds(60)), proxies_(TrustedProxies::parse("127.0.0.1").value()),
      services_{serviceOptions(), storage_, dictation_,
                linguist_,        mailer_,  releases_,
                metrics_,         codes_,   [] { return std::string_view(); }},
      routes_(makeRoutes(services_)) {
    storage_.registerDevice("6F9619FF-8B86-D011-B42D-00C04FC964FF", sha256(tokenOne));
    storage_.registerDevice("00000000-0000-4000-8000-000000000002", sha256(tokenTwo));
}

std::optional<DeviceId> ServiceUnderFuzz::deviceOf(std::string_view bearer) {
    const auto token = bearerToken("Bearer " + (bearer == "one"   ? tokenOne
                                                : bearer == "two" ? tokenTwo
                                                                  : std::string(bearer)));
    if (token.empty())
        return std::nullopt;
    const auto recalled = tokens_.recall(token);
    return recalled ? recalled : tokens_.deviceOf(token);
}

Answered ServiceUnderFuzz::answer(const ScriptedRequest& given) {
    now_ += std::chrono::seconds(given.number("Later", 1'000'000));
    const auto found = routes_.find(given.method, given.target);
    if (!found.route)
        return refused({}, found.status);
    auto request = requestOf({given.target, given.field("Type"), given.field("Take"), given.field("Platform"),
                              given.field("Peer"), given.field("Forwarded")},
                             proxies_);
    request.body = given.body;
    if (request.body.size() > found.route->bodyLimit)
        return refused(found.route->path, 413);
    if (found.route->access == Access::token) {
        const auto device = deviceOf(given.field("Bearer"));
        if (!device)
            return refused(found.route->path, 401);
        request.device = *device;
    }
    engine_.segments.clear();
    for (auto words = given.field("Words"); !words.empty();) {
        const auto end = std::min(words.find('|'), words.size());
        engine_.segments.emplace_back(words.substr(0, end));
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    RecordedExchange exchange;
    exchange.answered.route = found.route->path;
    if (const auto response =
            found.route->instant ? found.route->instant(request) : std::optional<Response>())
        exchange.respond(*response);
    else
        found.route->handler(request, exchange);
    require(exchange.answered.status != 0, "there is an answer");
    return std::move(exchange.answered);
}

std::vector<Letter> ServiceUnderFuzz::takeLetters() { return std::exchange(mailer_.letters, {}); }

} // namespace lorvane::backend::fuzz
