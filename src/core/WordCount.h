// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lorvane {

/// The number of words in a text. A word is a run of letters, digits and the marks on them; an apostrophe or
/// a hyphen between two of them belongs to the word ("don't", "well-known": one each). Scripts that put no
/// blanks between words count one word a run.
[[nodiscard]] int wordCount(const QString& text);

} // namespace lorvane
