// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Metrics.h"

#include <cstdio>

namespace lorvane::backend {

namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

void addLine(std::string& text, std::initializer_list<std::string_view> parts) {
    for (const auto part : parts)
        text += part;
    text += '\n';
}

void addLine(std::string& text, std::initializer_list<std::string_view> parts, std::uint64_t count) {
    for (const auto part : parts)
        text += part;
    text += std::to_string(count) + '\n';
}

std::string head(const std::string& name, const std::string& help, const char* type) {
    return "# HELP " + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
}

} // namespace

void Metrics::addGauge(std::string name, std::string help, std::function<double()> value) {
    readings_.push_back({std::move(name), std::move(help), "gauge", std::move(value)});
}

void Metrics::addCounter(std::string name, std::string help, std::function<double()> value) {
    readings_.push_back({std::move(name), std::move(help), "counter", std::move(value)});
}

void Metrics::countRequest(std::string_view route, int status, std::chrono::milliseconds took) {
    const auto seconds = std::chrono::duration<double>(took).count();
    const std::lock_guard lock(mutex_);
    ++requests_[{std::string(route), status}];
    auto& times = times_[std::string(route)];
    for (std::size_t i = 0; i < bounds.size(); ++i)
        times.within.at(i) += seconds <= bounds.at(i) ? 1 : 0;
    ++times.all;
    times.seconds += seconds;
}

void Metrics::countAudio(double seconds) {
    const std::lock_guard lock(mutex_);
    audioSeconds_ += seconds;
}

std::string Metrics::requestsText() const {
    std::string text = head("lorvane_requests_total", "Requests by route and status.", "counter");
    for (const auto& [key, count] : requests_)
        text += "lorvane_requests_total{route=\"" + key.first + "\",status=\"" +
                (key.second == 0 ? "gone" : std::to_string(key.second)) + "\"} " + std::to_string(count) +
                '\n';
    return text;
}

std::string Metrics::timesText() const {
    const std::string name = "lorvane_request_seconds";
    std::string text =
        head(name, "From the end of a request's header to the end of its answer.", "histogram");
    for (const auto& [route, times] : times_) {
        const auto label = "{route=\"" + route + '"';
        for (std::size_t i = 0; i < bounds.size(); ++i)
            addLine(text, {name, "_bucket", label, ",le=\"", number(bounds.at(i)), "\"} "},
                    times.within.at(i));
        addLine(text, {name, "_bucket", label, ",le=\"+Inf\"} "}, times.all);
        addLine(text, {name, "_sum", label, "} ", number(times.seconds)});
        addLine(text, {name, "_count", label, "} "}, times.all);
    }
    return text;
}

std::string Metrics::text() const {
    std::string text;
    for (const auto& reading : readings_)
        text += head(reading.name, reading.help, reading.type) + reading.name + ' ' +
                number(reading.value()) + '\n';
    const std::lock_guard lock(mutex_);
    text += head("lorvane_audio_seconds_total", "Sound of the takes that were worked on.", "counter") +
            "lorvane_audio_seconds_total " + number(audioSeconds_) + '\n';
    return text + requestsText() + timesText();
}

} // namespace lorvane::backend
