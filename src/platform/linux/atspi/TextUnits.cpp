// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/TextUnits.h"

#include <algorithm>

namespace lorvane {

namespace {
constexpr QChar padding(0xFEFF);
}

std::optional<TextUnit> unitOfToolkit(const QString& toolkitName) {
    const QString name = toolkitName.toLower();
    if (name.startsWith(QLatin1String("gtk")) || name.startsWith(QLatin1String("chrom")) ||
        name.startsWith(QLatin1String("webkit"))) {
        return TextUnit::codePoints;
    }
    if (name.startsWith(QLatin1String("qt")) || name.startsWith(QLatin1String("gecko")) ||
        name.startsWith(QLatin1String("vcl")) || name.startsWith(QLatin1String("libreoffice"))) {
        return TextUnit::utf16;
    }
    return std::nullopt;
}

bool toolkitPadsText(const QString& toolkitName) {
    return toolkitName.startsWith(QLatin1String("gecko"), Qt::CaseInsensitive);
}

bool toolkitRepeatsLastLineFeed(const QString& toolkitName) {
    return toolkitName.startsWith(QLatin1String("chrom"), Qt::CaseInsensitive);
}

qint64 insertionLength(const QString& toolkitName, const QString& text) {
    const bool isQt = toolkitName.startsWith(QLatin1String("qt"), Qt::CaseInsensitive);
    return isQt ? text.size() : text.toUtf8().size();
}

qint64 surrogatePairs(const QString& text) {
    return std::count_if(text.begin(), text.end(), [](QChar unit) { return unit.isHighSurrogate(); });
}

qint64 lengthIn(TextUnit unit, const QString& text) {
    return unit == TextUnit::utf16 ? text.size() : text.size() - surrogatePairs(text);
}

QString withoutPadding(const QString& text) {
    QString plain = text;
    plain.remove(padding);
    return plain;
}

bool endsWithFieldPadding(const QString& text) {
    if (!text.endsWith(padding)) {
        return false;
    }
    return text.size() < 2 || !text[text.size() - 2].isLowSurrogate();
}

std::optional<TextUnit> provenUnit(const QString& text, qint64 count, TextUnit assumed) {
    const qint64 units = text.size();
    const qint64 points = units - surrogatePairs(text);
    if (count == units && count == points) {
        return assumed;
    }
    if (count == units) {
        return TextUnit::utf16;
    }
    if (count == points) {
        return TextUnit::codePoints;
    }
    return std::nullopt;
}

bool isBlank(const QString& text) {
    return std::all_of(text.begin(), text.end(),
                       [](QChar unit) { return unit.isSpace() || unit == padding; });
}

} // namespace lorvane
