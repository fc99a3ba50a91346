// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"

namespace lorvane {

/// One line of the dictation stream.
struct StreamLine {
    QString type;
    std::optional<QString> text;
    std::optional<QString> raw;
    std::optional<QString> category;
    std::optional<QString> original;
    std::optional<QString> error;
    std::optional<QString> heard;
    std::optional<DailyGoal> goal;
};

/// What the backend sends, decoded. Strict in the types of the keys that are known, indifferent to others; a
/// null reads as a missing key.
[[nodiscard]] std::optional<StreamLine> decodeStreamLine(const QByteArray& json);
[[nodiscard]] std::optional<DictationResponse> decodeResponse(const QByteArray& json);
/// The "text" of a part.
[[nodiscard]] std::optional<QString> decodePart(const QByteArray& json);
/// The "token" of a registration, out of an object that holds nothing but texts.
[[nodiscard]] std::optional<QString> decodeToken(const QByteArray& json);

} // namespace lorvane
