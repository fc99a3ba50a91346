// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/helper/HelperWire.h"

#include <array>

namespace lorvane::helper {

namespace {

enum class Kind : std::uint8_t { hello = 1, commit = 2, contextState = 3, committed = 4 };

constexpr std::size_t headSize = 3;
constexpr std::size_t numberSize = 4;
constexpr std::size_t longestBody = 2 * numberSize + longestText;
constexpr unsigned bitsInByte = 8;
constexpr std::uint32_t byteMask = 0xFF;

void append(std::string& bytes, std::uint32_t number, std::size_t size = numberSize) {
    for (std::size_t at = 0; at < size; ++at) {
        bytes.push_back(static_cast<char>((number >> (bitsInByte * at)) & byteMask));
    }
}

std::uint32_t numberAt(std::string_view bytes, std::size_t from, std::size_t size = numberSize) {
    std::uint32_t number = 0;
    for (std::size_t at = 0; at < size; ++at) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[from + at]))
                  << (bitsInByte * at);
    }
    return number;
}

struct Body {
    Kind kind = Kind::hello;
    std::string bytes;
};

struct Encoder {
    Body operator()(const Hello& hello) const {
        return {Kind::hello, std::string(1, static_cast<char>(hello.version))};
    }
    Body operator()(const Commit& commit) const {
        Body body{Kind::commit, {}};
        append(body.bytes, commit.request);
        append(body.bytes, commit.context);
        body.bytes += commit.text.substr(0, longestText);
        return body;
    }
    Body operator()(const ContextState& state) const {
        Body body{Kind::contextState, {}};
        append(body.bytes, state.context);
        append(body.bytes, state.isSecret ? 1 : 0, 1);
        return body;
    }
    Body operator()(const Committed& committed) const {
        Body body{Kind::committed, {}};
        append(body.bytes, committed.request);
        append(body.bytes, committed.isDone ? 1 : 0, 1);
        return body;
    }
};

std::optional<Message> decode(Kind kind, std::string_view body) {
    constexpr std::size_t numberAndFlag = numberSize + 1;
    switch (kind) {
    case Kind::hello:
        // A later version may say more.
        return body.empty() ? std::nullopt
                            : std::optional<Message>(Hello{static_cast<std::uint8_t>(body.front())});
    case Kind::commit:
        return body.size() < 2 * numberSize
                   ? std::nullopt
                   : std::optional<Message>(Commit{numberAt(body, 0), numberAt(body, numberSize),
                                                   std::string(body.substr(2 * numberSize))});
    case Kind::contextState:
        return body.size() != numberAndFlag ? std::nullopt
                                            : std::optional<Message>(ContextState{
                                                  numberAt(body, 0), numberAt(body, numberSize, 1) != 0});
    case Kind::committed:
        return body.size() != numberAndFlag
                   ? std::nullopt
                   : std::optional<Message>(Committed{numberAt(body, 0), numberAt(body, numberSize, 1) != 0});
    }
    return std::nullopt;
}

/// The length of the well-formed character at the beginning, and its number; length 0 when it is not one.
struct Character {
    std::size_t length = 0;
    std::uint32_t number = 0;
};

Character characterAt(std::string_view text) {
    struct Form {
        unsigned char mask;
        unsigned char lead;
        std::uint32_t least;
    };
    constexpr std::array<Form, 4> forms{
        {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};
    constexpr unsigned bitsInTail = 6;
    const auto first = static_cast<unsigned char>(text.front());
    for (std::size_t length = 1; length <= forms.size(); ++length) {
        const Form& form = forms[length - 1];
        if ((first & form.mask) != form.lead || text.size() < length) {
            continue;
        }
        std::uint32_t number = first & static_cast<unsigned char>(~form.mask);
        for (std::size_t at = 1; at < length; ++at) {
            const auto tail = static_cast<unsigned char>(text[at]);
            if ((tail & 0xC0U) != 0x80U) {
                return {};
            }
            number = (number << bitsInTail) | (tail & 0x3FU);
        }
        const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
        const bool isCharacter = number >= form.least && number <= 0x10FFFF && !isSurrogate;
        return isCharacter ? Character{length, number} : Character{};
    }
    return {};
}

bool isControl(std::uint32_t number) { return number < 0x20 || (number >= 0x7F && number < 0xA0); }

} // namespace

std::string encode(const Message& message) {
    const Body body = std::visit(Encoder(), message);
    std::string frame;
    append(frame, static_cast<std::uint32_t>(body.bytes.size()), headSize - 1);
    frame.push_back(static_cast<char>(body.kind));
    return frame + body.bytes;
}

bool isCommittable(std::string_view text) {
    if (text.empty() || text.size() > longestText) {
        return false;
    }
    while (!text.empty()) {
        const Character character = characterAt(text);
        if (character.length == 0 || isControl(character.number)) {
            return false;
        }
        text.remove_prefix(character.length);
    }
    return true;
}

void Decoder::feed(std::string_view bytes) {
    if (!isBroken_) {
        waiting_ += bytes;
    }
}

std::optional<Message> Decoder::next() {
    if (isBroken_ || waiting_.size() < headSize) {
        return std::nullopt;
    }
    const std::size_t length = numberAt(waiting_, 0, headSize - 1);
    const auto kind = static_cast<unsigned char>(waiting_[headSize - 1]);
    isBroken_ = length > longestBody || kind < static_cast<unsigned char>(Kind::hello) ||
                kind > static_cast<unsigned char>(Kind::committed);
    if (isBroken_ || waiting_.size() < headSize + length) {
        return std::nullopt;
    }
    auto message = decode(static_cast<Kind>(kind), std::string_view(waiting_).substr(headSize, length));
    isBroken_ = !message;
    waiting_.erase(0, headSize + length);
    return message;
}

} // namespace lorvane::helper
