// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"
#include "audio/TakeEncoder.h"
#include "base/Foundation.h"
#include "base/Task.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <optional>

namespace lorvane {

/// What is left to send at the end of a take.
struct AssembledTail {
    /// The text of the parts that came back, ready to stand before the rest.
    QString prefix;
    /// PCM that no text came back for.
    QByteArray rest;
};

/// The parts of a long take, sent ahead while the user still speaks. Main thread. Capture cuts no takes
/// today, so no parts arise and the tail is the whole take.
class TakeParts {
 public:
    TakeParts(const Foundation& foundation, DictationEndpoints& endpoints, const TakeEncoder& encoder);
    TakeParts(const TakeParts&) = delete;
    TakeParts& operator=(const TakeParts&) = delete;

    /// Sends one finished part ahead. PCM too short to be a take is dropped.
    void takePart(const QByteArray& pcm);
    /// Forgets all parts; replies that are still to come are dropped.
    void clearParts();
    /// From the first part that has not come back on, all audio goes into the rest and later texts are not
    /// used.
    [[nodiscard]] AssembledTail assembleTail(const QByteArray& tail) const;
    [[nodiscard]] std::optional<Take> encodeTake(const QByteArray& pcm) const {
        return encoder_.encodeTake(pcm);
    }

 private:
    QCoro::Task<void> send(int index, Take take, QString context, TaskScope scope);
    void takeReply(int index, const std::optional<QString>& text);
    [[nodiscard]] QString priorText(int index) const;
    [[nodiscard]] int firstMissing() const;
    [[nodiscard]] QByteArray audioFrom(int index) const;

    DiagnosticLog& log_;
    DictationEndpoints& endpoints_;
    const TakeEncoder& encoder_;
    /// The index of the next part, which is also the number of parts.
    int partNext_ = 0;
    std::map<int, QByteArray> partAudio_;
    /// An empty text counts as come back.
    std::map<int, QString> partText_;
    std::map<int, TaskHandle> partTasks_;
};

/// Takes away the sentence end that a cut in the speech has put at the end of a part.
[[nodiscard]] QString withoutSentenceEnd(const QString& partText);

} // namespace lorvane
