// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/PersonName.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace lorvane::backend {

namespace {

constexpr int mostWords = 6;

bool isLetter(UChar32 sign) {
    return (u_getIntPropertyValue(sign, UCHAR_GENERAL_CATEGORY_MASK) & (U_GC_L_MASK | U_GC_M_MASK)) != 0;
}

bool joinsLetters(UChar32 sign) { return sign == '-' || sign == '\'' || sign == 0x2019; }

} // namespace

bool looksLikeAName(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int32_t>(text.size());
    int words = 0;
    UChar32 before = ' ';
    for (std::int32_t at = 0; at < size;) {
        UChar32 sign = 0;
        U8_NEXT(bytes, at, size, sign);
        const bool inWord = sign >= 0 && (isLetter(sign) || joinsLetters(sign));
        if (!inWord && sign != ' ' && (sign != '.' || !isLetter(before)))
            return false;
        if (inWord && before == '.')
            return false; // what would be a link
        words += inWord && before == ' ' ? 1 : 0;
        before = sign;
    }
    return words > 0 && words <= mostWords;
}

} // namespace lorvane::backend
