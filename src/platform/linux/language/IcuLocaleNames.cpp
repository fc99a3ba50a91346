// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/language/IcuLocaleNames.h"

#include <array>

#include <unicode/uloc.h>
#include <unicode/ustring.h>

namespace lorvane {

namespace {

QString nameIn(const QByteArray& locale, const QString& languageCode) {
    std::array<char16_t, 128> buffer{};
    UErrorCode status = U_ZERO_ERROR;
    const int length = uloc_getDisplayLanguage(languageCode.toLatin1().constData(), locale.constData(),
                                               buffer.data(), static_cast<int>(buffer.size()), &status);
    // The default stands for a name that is not there: it is the code itself.
    const bool isKnown = U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
    return isKnown ? QString::fromUtf16(buffer.data(), length) : QString();
}

} // namespace

// A system without a language reads English, as the program's words do.
IcuLocaleNames::IcuLocaleNames(const QString& locale)
    : locale_(locale.isEmpty() || locale == QLatin1String("C") ? QByteArray("en") : locale.toLatin1()) {}

QString IcuLocaleNames::nameOf(const QString& languageCode) const { return nameIn(locale_, languageCode); }

QString IcuLocaleNames::englishNameOf(const QString& languageCode) const {
    return nameIn("en", languageCode);
}

QString IcuLocaleNames::capitalised(const QString& name) const {
    const auto first = name.size() > 1 && name.at(0).isHighSurrogate() ? 2 : 1;
    const QString letter = name.left(first);
    std::array<char16_t, 8> upper{};
    UErrorCode status = U_ZERO_ERROR;
    const int length = u_strToUpper(upper.data(), static_cast<int>(upper.size()),
                                    reinterpret_cast<const char16_t*>(letter.utf16()),
                                    static_cast<int>(letter.size()), locale_.constData(), &status);
    return U_SUCCESS(status) ? QString::fromUtf16(upper.data(), length) + name.mid(first) : name;
}

} // namespace lorvane
