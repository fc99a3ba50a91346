// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// Figures for who runs the service, in the text format of Prometheus (0.0.4). Labels are routes and statuses:
// nothing that a client has sent. Any thread.
class Metrics {
 public:
    // Added before the first text() and read at each.
    void addGauge(std::string name, std::string help, std::function<double()> value);
    void addCounter(std::string name, std::string help, std::function<double()> value); // never falls
    // `status` 0: the client left before its answer was whole.
    void countRequest(std::string_view route, int status, std::chrono::milliseconds took);
    void countAudio(double seconds);
    std::string text() const;

 private:
    static constexpr std::array<double, 8> bounds{0.01, 0.05, 0.25, 1, 5, 20, 60, 240}; // seconds
    struct Times {
        std::array<std::uint64_t, bounds.size()> within{};
        std::uint64_t all = 0;
        double seconds = 0;
    };
    struct Reading {
        std::string name;
        std::string help;
        const char* type;
        std::function<double()> value;
    };
    std::string requestsText() const;
    std::string timesText() const;

    std::vector<Reading> readings_;
    mutable std::mutex mutex_;
    std::map<std::pair<std::string, int>, std::uint64_t> requests_;
    std::map<std::string, Times> times_;
    double audioSeconds_ = 0;
};

} // namespace lorvane::backend
