// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// What the program and its input method helper say to each other over a socket of the user's: frames of a
/// length (two bytes, of what follows the kind), a kind (one byte) and that many bytes; numbers
/// little-endian. Both sides say first which version they speak. No Qt here: the helper has none.
namespace lorvane::helper {

inline constexpr std::uint8_t wireVersion = 1;
/// The longest text of one commit, in bytes of UTF-8.
inline constexpr std::size_t longestText = 512;
/// Its name in $XDG_RUNTIME_DIR.
inline constexpr const char* socketName = "lorvane-input-method";

/// Both ways, first.
struct Hello {
    std::uint8_t version = wireVersion;
    friend bool operator==(const Hello&, const Hello&) = default;
};

/// To the helper: puts a text into that context.
struct Commit {
    std::uint32_t request = 0;
    std::uint32_t context = 0;
    std::string text;
    friend bool operator==(const Commit&, const Commit&) = default;
};

/// From the helper: the field that input methods may write into now.
struct ContextState {
    /// 0 when there is none. Never the same for two fields one after the other.
    std::uint32_t context = 0;
    bool isSecret = false;
    friend bool operator==(const ContextState&, const ContextState&) = default;
};

/// From the helper: what became of a commit.
struct Committed {
    std::uint32_t request = 0;
    /// Handed to the compositor; else nothing was done.
    bool isDone = false;
    friend bool operator==(const Committed&, const Committed&) = default;
};

using Message = std::variant<Hello, Commit, ContextState, Committed>;

[[nodiscard]] std::string encode(const Message& message);

/// Valid UTF-8 without control characters, not empty and no longer than `longestText`: what a compositor
/// can be handed.
[[nodiscard]] bool isCommittable(std::string_view text);

/// Takes messages out of a stream of bytes.
class Decoder {
 public:
    void feed(std::string_view bytes);
    /// The next whole message, if there is one.
    [[nodiscard]] std::optional<Message> next();
    /// Something came that is no message: nothing more can be made of the stream.
    [[nodiscard]] bool isBroken() const { return isBroken_; }

 private:
    std::string waiting_;
    bool isBroken_ = false;
};

} // namespace lorvane::helper
