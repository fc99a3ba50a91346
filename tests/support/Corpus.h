// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QStringList>

// Text to be typed in tests and measures: the same for the same arguments, everywhere.
namespace lorvane::corpus {

// Exactly so many characters (code points) of sentences in Latin letters with and without accents, Cyrillic,
// Greek, Chinese and Japanese, with emoji, some of them joined of several; no line feeds.
QString mixed(int characters, unsigned seed = 1);

// The text in the pieces in which a stream would bring it: 1 to about 20 UTF-16 units, cut anywhere but
// inside a character; a joined emoji may be cut between its parts.
QStringList fragments(const QString& text, unsigned seed = 1);

// How many characters are wrong: the fewest to put in, take out or replace to get from one to the other.
int wrongCharacters(const QString& have, const QString& want);

} // namespace lorvane::corpus
