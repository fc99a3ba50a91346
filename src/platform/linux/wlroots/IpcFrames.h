// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace lorvane {

/// A message of the socket commands that i3 introduced and sway speaks (sway-ipc(7)).
struct IpcMessage {
    std::uint32_t type = 0;
    QByteArray payload;

    /// Events carry the highest bit, answers the type of their question.
    [[nodiscard]] bool isEvent() const { return (type & 0x80000000U) != 0; }
    friend bool operator==(const IpcMessage&, const IpcMessage&) = default;
};

namespace ipcType {
constexpr std::uint32_t runCommand = 0;
constexpr std::uint32_t subscribe = 2;
constexpr std::uint32_t getVersion = 7;
constexpr std::uint32_t getConfig = 9;
constexpr std::uint32_t getBindingState = 12;
constexpr std::uint32_t workspaceEvent = 0x80000000U;
constexpr std::uint32_t modeEvent = 0x80000002U;
constexpr std::uint32_t bindingEvent = 0x80000005U;
} // namespace ipcType

[[nodiscard]] QByteArray encodeIpc(const IpcMessage& message);

/// Cuts a stream of bytes into messages. What is no message, or claims to be longer than any that is asked
/// for, breaks it for good.
class IpcReader {
 public:
    static constexpr std::uint32_t longestPayload = 4U << 20U;

    void feed(const QByteArray& bytes);
    [[nodiscard]] std::optional<IpcMessage> next();
    [[nodiscard]] bool isBroken() const { return isBroken_; }

 private:
    QByteArray bytes_;
    bool isBroken_ = false;
};

} // namespace lorvane
