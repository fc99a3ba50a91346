// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/WordCount.h"

#include <QList>

namespace lorvane {

namespace {

bool isOfAWord(char32_t character) { return QChar::isLetterOrNumber(character) || QChar::isMark(character); }

bool joinsAWord(char32_t character) {
    return character == U'\'' || character == U'\u2019' || character == U'-' || character == U'\u2010' ||
           character == U'\u2011';
}

} // namespace

int wordCount(const QString& text) {
    const QList<uint> characters = text.toUcs4();
    int words = 0;
    bool inWord = false;
    for (qsizetype i = 0; i < characters.size(); ++i) {
        const bool joins =
            inWord && joinsAWord(characters[i]) && i + 1 < characters.size() && isOfAWord(characters[i + 1]);
        const bool belongs = joins || isOfAWord(characters[i]);
        if (belongs && !inWord) {
            ++words;
        }
        inWord = belongs;
    }
    return words;
}

} // namespace lorvane
