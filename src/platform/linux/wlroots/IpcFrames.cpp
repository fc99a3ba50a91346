// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/IpcFrames.h"

#include <QByteArrayView>

#include <array>
#include <cstring>

namespace lorvane {

namespace {

// Then come the length of the payload and the type, in the byte order of the machine.
constexpr QByteArrayView magic("i3-ipc");
constexpr qsizetype headerSize = 14;

std::array<std::uint32_t, 2> lengthAndType(const QByteArray& bytes) {
    std::array<std::uint32_t, 2> numbers{};
    std::memcpy(numbers.data(), bytes.constData() + magic.size(), sizeof(numbers));
    return numbers;
}

} // namespace

QByteArray encodeIpc(const IpcMessage& message) {
    const std::array<std::uint32_t, 2> numbers{static_cast<std::uint32_t>(message.payload.size()),
                                               message.type};
    QByteArray bytes = magic.toByteArray();
    bytes.append(reinterpret_cast<const char*>(numbers.data()), sizeof(numbers));
    return bytes + message.payload;
}

void IpcReader::feed(const QByteArray& bytes) {
    if (!isBroken_) {
        bytes_ += bytes;
    }
}

std::optional<IpcMessage> IpcReader::next() {
    const qsizetype seen = std::min(bytes_.size(), magic.size());
    if (!magic.startsWith(QByteArrayView(bytes_).first(seen))) {
        isBroken_ = true;
    }
    if (isBroken_ || bytes_.size() < headerSize) {
        return std::nullopt;
    }
    const auto [length, type] = lengthAndType(bytes_);
    isBroken_ = length > longestPayload;
    if (isBroken_ || bytes_.size() < headerSize + static_cast<qsizetype>(length)) {
        return std::nullopt;
    }
    IpcMessage message{type, bytes_.mid(headerSize, length)};
    bytes_.remove(0, headerSize + static_cast<qsizetype>(length));
    return message;
}

} // namespace lorvane
