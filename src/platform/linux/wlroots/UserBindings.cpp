// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/UserBindings.h"

#include "platform/linux/wlroots/HoldKeyPlaces.h"
#include "platform/linux/wlroots/KeyBinding.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace lorvane {

namespace {

/// `words`: those of one binding, flags taken away.
void readBinding(bool byCode, const QStringList& words, UserBindings& bindings) {
    const QStringList parts = words.value(0).split(QLatin1Char('+'));
    std::uint8_t modifiers = 0;
    for (const QString& part : parts) {
        modifiers |= bindingModifierFromName(part);
    }
    const int key = byCode ? parts.last().toInt() : placeOfSymbol(parts.last());
    if (parts.size() == 1 && key != 0) {
        bindings.keys.insert(key);
    }
    if (words.mid(1).join(QLatin1Char(' ')).contains(QLatin1String("reload"))) {
        bindings.reloading.insert(modifiers);
    }
}

void readRepeat(const QStringList& words, UserBindings& bindings) {
    const qsizetype delay = words.indexOf(QStringLiteral("repeat_delay"));
    const qsizetype rate = words.indexOf(QStringLiteral("repeat_rate"));
    if (delay >= 0 && bindings.repeatDelay > 0) {
        bindings.repeatDelay = std::max(bindings.repeatDelay, words.value(delay + 1).toInt());
    }
    if (rate >= 0 && words.value(rate + 1).toInt() <= 0) {
        bindings.repeatDelay = 0;
    }
}

} // namespace

UserBindings UserBindings::read(const QString& config) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    UserBindings bindings;
    QHash<QString, QString> variables;
    QStringList block; // what stands before the lines of a block
    for (QString line : config.split(QLatin1Char('\n'))) {
        for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable) {
            line.replace(variable.key(), variable.value());
        }
        QStringList words = line.split(blanks, Qt::SkipEmptyParts);
        if (words.size() >= 3 && words.first() == QLatin1String("set")) {
            variables[words[1]] = words.mid(2).join(QLatin1Char(' '));
            continue;
        }
        if (words.value(0) == QLatin1String("}")) {
            block.clear();
            continue;
        }
        if (words.size() > 1 && words.last() == QLatin1String("{")) {
            block = words.first().startsWith(QLatin1String("bind")) ? words.mid(0, words.size() - 1)
                                                                    : QStringList();
            continue;
        }
        if (!words.isEmpty() && !words.first().startsWith(QLatin1Char('#'))) {
            words = block + words;
        }
        readRepeat(words, bindings);
        const bool byCode = words.value(0) == QLatin1String("bindcode");
        if (!byCode && words.value(0) != QLatin1String("bindsym")) {
            continue;
        }
        words.removeFirst();
        while (words.value(0).startsWith(QLatin1String("--"))) {
            words.removeFirst();
        }
        readBinding(byCode, words, bindings);
    }
    return bindings;
}

} // namespace lorvane
