// SPDX-License-Identifier: GPL-3.0-or-later
// Every route of the service, several requests after each other over one store: whatever is asked, the answer
// is one of those that docs/backend.md promises for its route.
#include "fuzz/Fuzz.h"
#include "fuzz/ServiceUnderFuzz.h"

#include <algorithm>
#include <boost/json.hpp>
#include <map>
#include <set>

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

namespace {

// Without those that come before any handler: 401 and 413.
const std::map<std::string_view, std::set<int>> promised{
    {"/api/register", {200, 400, 503}},
    {"/api/dictate", {200, 400, 413, 422, 429, 501}},
    {"/api/dictate-stream", {200, 400, 413, 501}},
    {"/api/transcribe-part", {200, 400, 413, 429, 501}},
    {"/api/onboarded", {200, 400}},
    {"/api/link", {200, 400, 404}},
    {"/api/referral", {200}},
    {"/api/invite", {200, 400, 429}},
    {"/api/feedback", {200, 400, 429}},
    {"/api/insights", {200, 400, 422, 429}},
    {"/api/summary", {200, 400, 422, 429}},
    {"/api/translate", {200, 400, 429, 503}},
    {"/get", {200}},
    {"/appcast.xml", {404}},
    {"/healthz", {200}},
    {"/readyz", {200}},
    {"/metrics", {200}},
};

// Printed at the end with LORVANE_FUZZ_TALLY set: whether the inputs get anywhere.
struct Tally {
    std::map<std::pair<std::string_view, int>, long> answers; // by route and status
    Tally() = default;
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;
    ~Tally() {
        for (const auto& [answer, count] : answers)
            if (std::getenv("LORVANE_FUZZ_TALLY"))
                std::fprintf(stderr, "%s %d: %ld\n", std::string(answer.first).c_str(), answer.second, count);
    }
};

Tally& tally() {
    static Tally all;
    return all;
}

bool has(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

boost::json::object objectIn(std::string_view text) {
    boost::system::error_code error;
    auto value = boost::json::parse({text.data(), text.size()}, error);
    require(!error && value.is_object(), "an answer is a JSON object in UTF-8");
    return value.as_object();
}

bool isToken(std::string_view text) {
    return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::string textIn(const boost::json::object& object, const char* key) {
    const auto* value = object.if_contains(key);
    require(value && value->is_string(), "the answer has its text");
    return std::string(value->as_string());
}

// Deltas, then the line that ends it, whose text they are.
void checkStream(const Answered& answered) {
    std::string text;
    require(!answered.lines.empty(), "a stream says how it ended");
    for (const auto& line : answered.lines) {
        const auto object = objectIn(line);
        const auto type = textIn(object, "type");
        const bool last = &line == &answered.lines.back();
        require(last == (type == "done" || type == "error"), "the last line ends the stream, and no other");
        if (type == "delta")
            text += textIn(object, "text");
        if (type == "done")
            require(textIn(object, "text") == text, "the deltas are the text");
        if (type == "error")
            require(!has(textIn(object, "error"), "engine"), "nothing failed");
    }
}

void checkBody(const ScriptedRequest& request, const Answered& answered, ServiceUnderFuzz& service) {
    if (answered.contentType == "application/x-ndjson")
        return checkStream(answered);
    if (answered.route == "/get" && answered.status == 200)
        return require(!has(answered.body, "<script") && answered.body.ends_with("</html>\n"),
                       "the page holds no foreign markup");
    if (answered.contentType != "application/json")
        return;
    const auto object = objectIn(answered.body);
    const bool registered = answered.route == "/api/register" && answered.status == 200;
    if (registered)
        require(service.knows(textIn(object, "token")), "the token is good");
    for (const auto& [key, value] : object)
        require(!value.is_string() || registered || !isToken(std::string_view(value.as_string())) ||
                    has(request.body, std::string_view(value.as_string())) ||
                    has(request.field("Words"), std::string_view(value.as_string())),
                "no token in the answer");
}

void checkLetter(const Letter& letter) {
    const auto message = messageOf(letter, {}, "unique");
    std::string_view head = std::string_view(message).substr(0, message.find("\r\n\r\n"));
    std::set<std::string_view> names;
    while (!head.empty()) {
        const auto line = head.substr(0, head.find("\r\n"));
        require(!has(line, "\n") && !has(line, "\r"), "a header has whole lines");
        if (!line.starts_with(' '))
            require(names.insert(line.substr(0, line.find(':'))).second, "a header comes once");
        head.remove_prefix(std::min(line.size() + 2, head.size()));
    }
    names.erase("Reply-To");
    require(names == std::set<std::string_view>{"Date", "From", "To", "Subject", "Message-ID", "MIME-Version",
                                                "Content-Type", "Content-Transfer-Encoding",
                                                "Auto-Submitted"},
            "no content makes a header of its own");
    require(std::all_of(message.begin(), message.end(), [](char c) { return c > 0 && c < 0x7f; }),
            "a letter is ASCII");
}

// They go into the log.
void checkNotes(const Answered& answered) {
    require(answered.notes.size() < 300, "notes are short");
    require(std::all_of(answered.notes.begin(), answered.notes.end(),
                        [](char c) { return c >= ' ' && c < 0x7f; }),
            "notes are one line");
    for (const auto& token : {ServiceUnderFuzz::tokenOne, ServiceUnderFuzz::tokenTwo})
        require(!has(answered.notes, token), "no token in the log");
}

void check(const ScriptedRequest& request, ServiceUnderFuzz& service) {
    const auto answered = service.answer(request);
    const auto route = promised.find(answered.route);
    if (route == promised.end()) {
        require(answered.route.empty() && (answered.status == 404 || answered.status == 405),
                "what is no route is refused");
    } else {
        require(route->second.contains(answered.status) || answered.status == 401 || answered.status == 413,
                "the status is one of the route's");
        ++tally().answers[{route->first, answered.status}];
    }
    checkBody(request, answered, service);
    checkNotes(answered);
    for (const auto& letter : service.takeLetters())
        checkLetter(letter);
}

// The words of recognisers come as UTF-8: they are checked where they are read.
bool utf8(std::string_view text) {
    boost::system::error_code error;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20 ? 'x' : c;
    boost::json::parse(quoted + '"', error);
    return !error;
}

} // namespace

// What was freed is watched for a while: by default so much that every input runs through fresh memory, at
// half the speed.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=16"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto requests = readScene(textOf(data, size));
    if (std::any_of(requests.begin(), requests.end(),
                    [](const auto& request) { return !utf8(request.field("Words")); }))
        return 0;
    ServiceUnderFuzz service;
    for (const auto& request : requests)
        check(request, service);
    return 0;
}
