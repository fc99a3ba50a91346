// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/LanguageCatalogue.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace lorvane {

namespace {

// Languages of many speakers first; the order is the order of every menu.
constexpr std::array<std::pair<const char*, const char*>, 121> table{{
    {"en", "English"},
    {"es", "Español"},
    {"zh", "中文"},
    {"hi", "हिन्दी"},
    {"ar", "العربية"},
    {"pt", "Português"},
    {"ru", "Русский"},
    {"ja", "日本語"},
    {"de", "Deutsch"},
    {"fr", "Français"},
    {"it", "Italiano"},
    {"ko", "한국어"},
    {"tr", "Türkçe"},
    {"pl", "Polski"},
    {"uk", "Українська"},
    {"nl", "Nederlands"},
    {"id", "Bahasa Indonesia"},
    {"vi", "Tiếng Việt"},
    {"th", "ไทย"},
    {"el", "Ελληνικά"},
    {"cs", "Čeština"},
    {"sv", "Svenska"},
    {"ro", "Română"},
    {"hu", "Magyar"},
    {"he", "עברית"},
    {"da", "Dansk"},
    {"fi", "Suomi"},
    {"no", "Norsk"},
    {"sk", "Slovenčina"},
    {"bg", "Български"},
    {"hr", "Hrvatski"},
    {"sr", "Српски"},
    {"ca", "Català"},
    {"fa", "فارسی"},
    {"ms", "Bahasa Melayu"},
    {"fil", "Filipino"},
    {"bn", "বাংলা"},
    {"ta", "தமிழ்"},
    {"ur", "اردو"},
    {"sw", "Kiswahili"},
    {"af", "Afrikaans"},
    {"et", "Eesti"},
    {"lv", "Latviešu"},
    {"lt", "Lietuvių"},
    {"sl", "Slovenščina"},
    {"is", "Íslenska"},
    {"hy", "Հայերեն"},
    {"ka", "ქართული"},
    {"az", "Azərbaycan"},
    {"kk", "Қазақша"},
    {"pa", "ਪੰਜਾਬੀ"},
    {"gu", "ગુજરાતી"},
    {"mr", "मराठी"},
    {"te", "తెలుగు"},
    {"kn", "ಕನ್ನಡ"},
    {"ml", "മലയാളം"},
    {"ne", "नेपाली"},
    {"si", "සිංහල"},
    {"km", "ខ្មែរ"},
    {"lo", "ລາວ"},
    {"my", "မြန်မာ"},
    {"am", "አማርኛ"},
    {"sq", "Shqip"},
    {"mk", "Македонски"},
    {"be", "Беларуская"},
    {"uz", "Oʻzbekcha"},
    {"ky", "Кыргызча"},
    {"mn", "Монгол"},
    {"cy", "Cymraeg"},
    {"ga", "Gaeilge"},
    {"mt", "Malti"},
    {"gl", "Galego"},
    {"eu", "Euskara"},
    {"yo", "Yorùbá"},
    {"zu", "isiZulu"},
    {"ps", "پښتو"},
    {"ku", "Kurdî"},
    {"tg", "Тоҷикӣ"},
    {"tk", "Türkmençe"},
    {"sd", "سنڌي"},
    {"as", "অসমীয়া"},
    {"or", "ଓଡ଼ିଆ"},
    {"ug", "ئۇيغۇرچە"},
    {"jv", "Basa Jawa"},
    {"su", "Basa Sunda"},
    {"ceb", "Cebuano"},
    {"mg", "Malagasy"},
    {"ny", "Chichewa"},
    {"sn", "ChiShona"},
    {"so", "Soomaali"},
    {"rw", "Kinyarwanda"},
    {"ln", "Lingála"},
    {"wo", "Wolof"},
    {"ig", "Igbo"},
    {"ha", "Hausa"},
    {"xh", "isiXhosa"},
    {"st", "Sesotho"},
    {"tt", "Татарча"},
    {"ba", "Башҡортса"},
    {"lb", "Lëtzebuergesch"},
    {"fo", "Føroyskt"},
    {"bs", "Bosanski"},
    {"gd", "Gàidhlig"},
    {"br", "Brezhoneg"},
    {"oc", "Occitan"},
    {"co", "Corsu"},
    {"yi", "ייִדיש"},
    {"mi", "Māori"},
    {"haw", "ʻŌlelo Hawaiʻi"},
    {"sm", "Gagana Sāmoa"},
    {"bo", "བོད་སྐད"},
    {"ce", "Нохчийн"},
    {"dv", "ދިވެހި"},
    {"ff", "Fulah"},
    {"lg", "Ganda"},
    {"ast", "Asturian"},
    {"kea", "Kabuverdianu"},
    {"luo", "Luo"},
    {"nso", "Northern Sotho"},
    {"umb", "Umbundu"},
    {"yue", "Cantonese"},
}};

// Languages that a text can be translated into and that no one can dictate in.
constexpr std::array notDictated{"si", "sq", "eu", "tk", "ug", "su",  "mg", "rw", "st", "tt", "ba",
                                 "fo", "gd", "br", "co", "yi", "haw", "sm", "bo", "ce", "dv"};

std::vector<Language> makeTranslationLanguages() {
    std::vector<Language> languages;
    languages.reserve(table.size());
    for (const auto& [code, ownName] : table) {
        languages.push_back({QString::fromLatin1(code), QString::fromUtf8(ownName)});
    }
    return languages;
}

QSet<QString> makeDictationCodes() {
    QSet<QString> codes;
    for (const Language& language : translationLanguages()) {
        codes.insert(language.code);
    }
    for (const char* code : notDictated) {
        codes.remove(QString::fromLatin1(code));
    }
    return codes;
}

std::vector<Language> makeDictationLanguages() {
    std::vector<Language> languages;
    std::copy_if(translationLanguages().begin(), translationLanguages().end(), std::back_inserter(languages),
                 [](const Language& language) { return canDictateIn(language.code); });
    return languages;
}

} // namespace

const std::vector<Language>& translationLanguages() {
    static const std::vector<Language> languages = makeTranslationLanguages();
    return languages;
}

const std::vector<Language>& dictationLanguages() {
    static const std::vector<Language> languages = makeDictationLanguages();
    return languages;
}

bool canDictateIn(const QString& code) {
    static const QSet<QString> codes = makeDictationCodes();
    return codes.contains(code.toLower());
}

QString ownNameOf(const QString& code) {
    const auto& languages = translationLanguages();
    const auto found = std::find_if(languages.begin(), languages.end(),
                                    [&](const Language& language) { return language.code == code; });
    return found == languages.end() ? QString() : found->ownName;
}

} // namespace lorvane
