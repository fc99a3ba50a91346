// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Log.h"

#include <array>
#include <chrono>
#include <ctime>
#include <string>
#include <unistd.h>

namespace lorvane::backend {

namespace {

std::string timestamp() {
    const auto now = std::chrono::system_clock::now();
    const auto seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    const auto size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    auto fraction = std::to_string(1000 + millis);
    fraction[0] = '.';
    return std::string(text.data(), size) + fraction + "Z ";
}

} // namespace

void logLine(std::string_view text) {
    std::string line = timestamp();
    for (const char c : text)
        line += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c;
    line += '\n';
    // One write a line keeps lines of several threads whole.
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

} // namespace lorvane::backend
