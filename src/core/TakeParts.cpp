// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TakeParts.h"

#include <QStringList>

namespace lorvane {

TakeParts::TakeParts(const Foundation& foundation, DictationEndpoints& endpoints, const TakeEncoder& encoder)
    : log_(foundation.log), endpoints_(endpoints), encoder_(encoder) {}

void TakeParts::takePart(const QByteArray& pcm) {
    const std::optional<Take> take = encoder_.encodeTake(pcm);
    if (!take) {
        return;
    }
    const int index = partNext_++;
    partAudio_[index] = pcm;
    const QString context = priorText(index);
    TaskHandle task = startTask([this, index, part = *take, context](TaskScope scope) {
        return send(index, part, context, std::move(scope));
    });
    if (task.isRunning()) {
        partTasks_[index] = std::move(task);
    }
}

QCoro::Task<void> TakeParts::send(int index, Take take, QString context, TaskScope scope) {
    const std::optional<QString> text =
        co_await endpoints_.transcribePart(take.data, take.ext, context, scope);
    if (!scope.isCancelled()) {
        takeReply(index, text);
    }
}

void TakeParts::takeReply(int index, const std::optional<QString>& text) {
    if (!partAudio_.contains(index)) {
        return; // the take has been cleared
    }
    if (text) {
        partText_[index] = *text;
    }
    partTasks_.erase(index);
}

void TakeParts::clearParts() {
    // The end of a task may run code that looks at the maps: they are empty by then.
    const auto ending = std::exchange(partTasks_, {});
    partAudio_.clear();
    partText_.clear();
    partNext_ = 0;
}

AssembledTail TakeParts::assembleTail(const QByteArray& tail) const {
    const int gap = firstMissing();
    encoder_.dumpTake(audioFrom(0) + tail, QStringLiteral("whole"));
    QStringList prefix;
    int collected = 0;
    for (int index = 0; index < gap; ++index) {
        const QString& text = partText_.at(index);
        collected += text.isEmpty() ? 0 : 1;
        const QString cleaned = withoutSentenceEnd(text);
        if (!cleaned.isEmpty()) {
            prefix.append(cleaned);
        }
    }
    if (gap < partNext_) {
        log_.diagLog(QStringLiteral("[tirra-part] %1 of %2 parts came back; the rest rides with the tail")
                         .arg(collected)
                         .arg(partNext_));
    }
    return {prefix.join(u' '), audioFrom(gap) + tail};
}

QString TakeParts::priorText(int index) const {
    QStringList texts;
    for (int i = 0; i < index; ++i) {
        const auto found = partText_.find(i);
        if (found == partText_.end()) {
            break;
        }
        if (!found->second.isEmpty()) {
            texts.append(found->second);
        }
    }
    return texts.join(u' ');
}

int TakeParts::firstMissing() const {
    int index = 0;
    while (index < partNext_ && partText_.contains(index)) {
        ++index;
    }
    return index;
}

QByteArray TakeParts::audioFrom(int index) const {
    QByteArray all;
    for (auto it = partAudio_.lower_bound(index); it != partAudio_.end(); ++it) {
        all += it->second;
    }
    return all;
}

QString withoutSentenceEnd(const QString& partText) {
    QString text = partText.trimmed();
    while (text.endsWith(u'.') || text.endsWith(u'\u2026')) {
        text.chop(1);
        text = text.trimmed();
    }
    return text;
}

} // namespace lorvane
