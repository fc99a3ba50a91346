// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/Scene.h"

#include "testing/Connection.h"
#include "testing/Sound.h"

#include <algorithm>
#include <charconv>

namespace lorvane::backend::fuzz {

namespace {

constexpr std::size_t mostRequests = 8;
constexpr long mostSamples = 48'000;
constexpr std::string_view between = "\n%%\n";

std::string_view takeUntil(std::string_view& text, std::string_view mark) {
    const auto at = std::min(text.find(mark), text.size());
    const auto part = text.substr(0, at);
    text.remove_prefix(std::min(at + mark.size(), text.size()));
    return part;
}

std::string bodyOf(const ScriptedRequest& request, std::string_view text) {
    std::string sound;
    if (const auto samples = request.number("Sound", mostSamples); samples > 0)
        sound = testing::wavFile(testing::tone(static_cast<double>(samples) / 16'000, 0.3));
    if (request.field("Framed").empty())
        return std::string(text) + sound;
    const auto fields = takeUntil(text, "\n");
    return testing::framedTake(fields, std::string(text) + sound);
}

} // namespace

std::string_view ScriptedRequest::field(std::string_view name) const {
    const auto found = header.find(name);
    return found == header.end() ? std::string_view() : found->second;
}

long ScriptedRequest::number(std::string_view name, long most) const {
    const auto text = field(name);
    long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::clamp(number, 0L, most);
}

std::vector<ScriptedRequest> readScene(std::string_view input) {
    std::vector<ScriptedRequest> requests;
    while (!input.empty() && requests.size() < mostRequests) {
        auto rest = takeUntil(input, between);
        auto line = takeUntil(rest, "\n");
        ScriptedRequest request;
        request.method = takeUntil(line, " ");
        request.target = line;
        for (line = takeUntil(rest, "\n"); !line.empty(); line = takeUntil(rest, "\n")) {
            const auto name = takeUntil(line, ": ");
            request.header[name] = line;
        }
        request.body = bodyOf(request, rest);
        requests.push_back(std::move(request));
    }
    return requests;
}

} // namespace lorvane::backend::fuzz
