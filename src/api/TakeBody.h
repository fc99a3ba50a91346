// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"
#include "api/HttpClient.h"
#include "base/Preferences.h"

#include <QJsonObject>

namespace lorvane {

/// The fields that go with a take to the dictation endpoints; what does not apply is left out.
[[nodiscard]] QJsonObject takeFields(const DictationRequest& request, const Preferences& preferences);
/// The same for one part of a take.
[[nodiscard]] QJsonObject partFields(const QString& ext, const QString& context,
                                     const Preferences& preferences);

/// JSON as bytes; nothing when the object cannot be written.
using JsonWriter = std::function<std::optional<QByteArray>(const QJsonObject&)>;
[[nodiscard]] std::optional<QByteArray> compactJson(const QJsonObject& object);

/// Sets the body and its Content-Type. "application/vnd.tirra.take": the length of the JSON in four bytes,
/// big-endian, then the JSON, then the audio up to the end. Fields that cannot be framed go as plain JSON
/// with the audio in base64 under "audio"; if that fails too the request has no body.
void attachTake(HttpRequest& request, QJsonObject fields, const QByteArray& audio,
                const JsonWriter& write = compactJson);

} // namespace lorvane
