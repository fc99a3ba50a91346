// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace lorvane::backend {

// Of a take's whole text, in bytes. A server that says more than anybody can speak has failed.
constexpr std::size_t longestSocketText = std::size_t(1) << 20;

// What a server says is no answer to a take; tells nothing of its content.
class BadSpeechAnswer : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// A Wyoming server's events, in any pieces: a line of JSON, then as many bytes of JSON and of anything else
// as it announces. A server that streams sends pieces of the transcript before the whole; one that sends only
// pieces ends them with a stop.
class WyomingReader {
 public:
    // True when the transcript is whole; what comes behind it is not looked at. Throws BadSpeechAnswer.
    bool feed(std::string_view bytes);
    const std::string& text() const { return text_; }

 private:
    struct Head {
        std::string type;
        std::string text; // of the data within the line
        std::size_t data = 0;
        std::size_t payload = 0;
    };
    bool readHead();
    bool readEvent();
    void hear(const std::string& type, const std::string& text);

    std::string read_;
    std::optional<Head> head_; // of the event whose bytes are still coming
    std::string pieces_;
    std::string text_;
    bool whole_ = false;
};

// A Vosk server's answers: mostly what it guesses so far; the words of a sentence that has ended come as
// "text".
class VoskReader {
 public:
    void hear(std::string_view message); // throws BadSpeechAnswer
    const std::string& text() const { return text_; }

 private:
    std::string text_;
};

} // namespace lorvane::backend
