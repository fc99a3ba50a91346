// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace lorvane::backend {

// Takes a body of server-sent events (HTML standard, "event stream") apart into its lines, whatever the
// pieces that it comes in. What the lines mean is for who asks. One thread.
class SseReader {
 public:
    struct Line {
        std::string_view field; // empty for a comment
        std::string_view value; // without the blank after the colon
        std::string_view whole; // empty: the end of an event
    };
    // Valid during the call only; false: no more is wanted.
    using OnLine = std::function<bool(const Line& line)>;

    explicit SseReader(OnLine onLine, std::size_t longestLine = std::size_t(1) << 20);

    // False when no more is wanted, or a line was too long.
    bool feed(std::string_view bytes);
    // A last line may lack its end.
    bool finish();
    bool tooLong() const { return tooLong_; }

 private:
    bool emit();

    const OnLine onLine_;
    const std::size_t longest_;
    std::string line_;
    bool first_ = true;
    bool afterReturn_ = false; // a line feed now belongs to the line end before it
    bool wanted_ = true;
    bool tooLong_ = false;
};

} // namespace lorvane::backend
