// SPDX-License-Identifier: GPL-3.0-or-later
#include "Items.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace lorvane {

namespace {

Backup backupOf(std::vector<HistoryItem> items) {
    Backup backup;
    backup.exportedAt = FileDate{800'000'000.125};
    backup.history = HistoryList(std::move(items));
    return backup;
}

/// Written and read again.
std::optional<Backup> again(const Backup& backup) {
    const auto bytes = encodeBackup(backup);
    return bytes ? decodeBackup(*bytes) : std::nullopt;
}

const QByteArray item =
    R"({"id":"ABCDEF01-2345-6789-ABCD-000000000001","text":"t","raw":"r","createdAt":1.5})";

QByteArray fileWith(const QByteArray& items, const QByteArray& rest = R"("deleted":[])") {
    return R"({"version":2,"exportedAt":1,"history":[)" + items + "]," + rest + "}";
}

/// The bare item with a key replaced by something else, or left out.
QByteArray itemWith(const QByteArray& key, const QByteArray& value) {
    QByteArray members;
    for (const QByteArray& member : item.mid(1, item.size() - 2).split(',')) {
        if (!member.startsWith('"' + key + '"')) {
            members += member + ',';
        }
    }
    return '{' + (value.isEmpty() ? members.chopped(1) : members + '"' + key + "\":" + value) + '}';
}

TEST(Backup, EveryFieldComesBackAsItWas) {
    Backup backup = backupOf({fullItem(1), bareItem(2)});
    backup.deleted = {uuid(7), uuid(8)};
    EXPECT_EQ(again(backup), backup);
}

TEST(Backup, AnEmptyHistoryIsAFileToo) {
    const auto bytes = encodeBackup(backupOf({}));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(*bytes, R"({"version":2,"exportedAt":800000000.125,"history":[],"deleted":[]})");
    EXPECT_EQ(decodeBackup(*bytes), backupOf({}));
}

TEST(Backup, VersionIsAlwaysWrittenAsTwoAndDeletedAlwaysWritten) {
    const QJsonObject json = asJson(*encodeBackup(backupOf({bareItem(1)})));
    EXPECT_EQ(json.value(QStringLiteral("version")), QJsonValue(2));
    EXPECT_EQ(json.value(QStringLiteral("deleted")), QJsonValue(QJsonArray()));
    EXPECT_EQ(json.keys(), (QStringList{QStringLiteral("deleted"), QStringLiteral("exportedAt"),
                                        QStringLiteral("history"), QStringLiteral("version")}));
}

TEST(Backup, OptionalKeysAreWrittenOnlyWhenPresent) {
    const QJsonArray items = asJson(*encodeBackup(backupOf({bareItem(1), fullItem(2)})))
                                 .value(QStringLiteral("history"))
                                 .toArray();
    EXPECT_EQ(items[0].toObject().keys(), (QStringList{QStringLiteral("createdAt"), QStringLiteral("id"),
                                                       QStringLiteral("raw"), QStringLiteral("text")}));
    EXPECT_EQ(items[1].toObject().keys(),
              (QStringList{QStringLiteral("category"), QStringLiteral("createdAt"), QStringLiteral("device"),
                           QStringLiteral("durationSec"), QStringLiteral("id"), QStringLiteral("raw"),
                           QStringLiteral("sentAt"), QStringLiteral("sentVia"), QStringLiteral("text"),
                           QStringLiteral("translatedTo")}));
}

TEST(Backup, IdsAreWrittenInUpperCaseAndReadInEither) {
    const QByteArray bytes = fileWith(item.toLower().replace("createdat", "createdAt"),
                                      R"("deleted":["abcdef01-2345-6789-abcd-000000000002"])");
    const auto backup = decodeBackup(bytes);
    ASSERT_TRUE(backup);
    EXPECT_EQ(backup->history.begin()->id, uuid(1));
    const QByteArray written = *encodeBackup(*backup);
    EXPECT_TRUE(written.contains(R"("ABCDEF01-2345-6789-ABCD-000000000001")")) << written.constData();
    EXPECT_TRUE(written.contains(R"("deleted":["ABCDEF01-2345-6789-ABCD-000000000002"])"))
        << written.constData();
}

TEST(Backup, DatesAreSecondsSinceTheYear2001) {
    HistoryItem dated = bareItem(1);
    using namespace std::chrono;
    dated.createdAt = FileDate::of(WallTime(sys_days(2001y / January / 2)) + 500ms);
    const QJsonArray items =
        asJson(*encodeBackup(backupOf({dated}))).value(QStringLiteral("history")).toArray();
    EXPECT_EQ(items[0].toObject().value(QStringLiteral("createdAt")).toDouble(), 86'400.5);
    EXPECT_EQ(dated.createdAt.time(), WallTime(sys_days(2001y / January / 2)) + 500ms);
}

TEST(Backup, DatesKeepFullDoublePrecision) {
    std::mt19937_64 random(3);
    std::vector<HistoryItem> items;
    for (int number = 0; number < 2'000; ++number) {
        HistoryItem dated = bareItem(number);
        dated.createdAt.seconds = std::uniform_real_distribution(-1e9, 2e9)(random);
        dated.sentAt =
            FileDate{std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 1900) - 1000)};
        dated.durationSec = std::nextafter(static_cast<double>(number), 1e9);
        items.push_back(dated);
    }
    const Backup backup = backupOf(items);
    EXPECT_EQ(again(backup), backup);
}

TEST(Backup, NumbersAtTheEdgesOfTheDoubleComeBack) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0, 1e15, 1e16, 9007199254740993.0, 123456789012345678901234.0, Limits::max(),
                               Limits::min(), Limits::denorm_min(), Limits::lowest()}) {
        HistoryItem dated = bareItem(1);
        dated.createdAt.seconds = value;
        const auto read = again(backupOf({dated}));
        ASSERT_TRUE(read) << value;
        EXPECT_EQ(read->history.begin()->createdAt.seconds, value);
        EXPECT_NO_FATAL_FAILURE((void)read->history.begin()->createdAt.time());
    }
}

TEST(Backup, WhatJsonCannotSayIsNotWritten) {
    for (const double value : {std::numeric_limits<double>::infinity(), std::nan("")}) {
        HistoryItem endless = bareItem(1);
        endless.durationSec = value;
        EXPECT_EQ(encodeBackup(backupOf({endless})), std::nullopt);
    }
}

TEST(Backup, EveryTextComesBack) {
    QString controls;
    for (char16_t unit = 0; unit < 0x20; ++unit) {
        controls += QChar(unit);
    }
    for (const QString& text :
         {QString::fromUtf8(""), QString::fromUtf8("\"quoted\" \\ and / and \x7f"), controls,
          QString::fromUtf8("Привет, мир — ¿qué tal? 你好 🎙️👩‍👩‍👧 "
                            "\xE2\x80\xA8\xE2\x80\xA9 "
                            "ü"),
          QStringLiteral(u"\uFFFF\uFEFF\u0000\U0001F399")}) {
        HistoryItem written = bareItem(1, text);
        written.category = text;
        const auto read = again(backupOf({written}));
        ASSERT_TRUE(read) << text.toStdString();
        EXPECT_EQ(*read->history.begin(), written) << text.toStdString();
        EXPECT_FALSE(QJsonDocument::fromJson(*encodeBackup(backupOf({written}))).isNull())
            << text.toStdString();
    }
}

TEST(Backup, HalfASurrogatePairDoesNotSpoilTheFile) {
    HistoryItem halved = bareItem(1, QStringLiteral("a") + QChar(0xD83C) + QStringLiteral("b"));
    const auto read = again(backupOf({halved}));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->history.begin()->text.size(), 3);
}

TEST(Backup, MissingDeletedIsEmpty) {
    for (const char* const rest : {R"("more":1)", R"("deleted":null)"}) {
        const auto backup = decodeBackup(fileWith(item, rest));
        ASSERT_TRUE(backup) << rest;
        EXPECT_TRUE(backup->deleted.isEmpty());
        EXPECT_TRUE(encodeBackup(*backup)->endsWith(R"("deleted":[]})"));
    }
}

TEST(Backup, AnyVersionLoadsTheSame) {
    const auto wanted = decodeBackup(fileWith(item));
    ASSERT_TRUE(wanted);
    for (const char* const version : {"1", "0", "-3", "99999999", "18446744073709551615", "2.5", "1e9"}) {
        EXPECT_EQ(decodeBackup(fileWith(item).replace("\"version\":2", QByteArray("\"version\":") + version)),
                  wanted)
            << version;
    }
}

TEST(Backup, MissingKeysOfTheWholeFailTheFile) {
    for (const char* const key : {"version", "exportedAt", "history"}) {
        EXPECT_EQ(decodeBackup(fileWith(item).replace(key, "other")), std::nullopt) << key;
    }
}

TEST(Backup, OneItemThatLacksARequiredKeyFailsTheFile) {
    ASSERT_TRUE(decodeBackup(fileWith(item + ',' + item)));
    for (const char* const key : {"id", "text", "raw", "createdAt"}) {
        EXPECT_EQ(decodeBackup(fileWith(item + ',' + itemWith(key, {}))), std::nullopt) << key;
        EXPECT_EQ(decodeBackup(fileWith(item + ',' + itemWith(key, "null"))), std::nullopt) << key;
    }
}

TEST(Backup, OneFieldOfAnotherKindFailsTheFile) {
    for (const char* const key : {"id", "text", "raw", "category", "translatedTo", "sentVia", "device"}) {
        EXPECT_EQ(decodeBackup(fileWith(itemWith(key, "5"))), std::nullopt) << key;
        EXPECT_EQ(decodeBackup(fileWith(itemWith(key, "[]"))), std::nullopt) << key;
    }
    for (const char* const key : {"createdAt", "sentAt", "durationSec"}) {
        EXPECT_EQ(decodeBackup(fileWith(itemWith(key, R"("5")"))), std::nullopt) << key;
        EXPECT_EQ(decodeBackup(fileWith(itemWith(key, "true"))), std::nullopt) << key;
    }
    for (const char* const id :
         {R"("")", R"("{ABCDEF01-2345-6789-ABCD-000000000001}")", R"("ABCDEF01-2345-6789-ABCD-00000000000G")",
          R"("ABCDEF0102345-6789-ABCD-000000000001")", R"("ABCDEF01-2345-6789-ABCD-0000000000011")",
          R"("ABCDEF01-2345-6789-ABCD-00000000000é")"}) {
        EXPECT_EQ(decodeBackup(fileWith(itemWith("id", id))), std::nullopt) << id;
        EXPECT_EQ(decodeBackup(fileWith(item, QByteArray(R"("deleted":[)") + id + "]")), std::nullopt) << id;
    }
    EXPECT_EQ(decodeBackup(fileWith("7")), std::nullopt);
    EXPECT_EQ(decodeBackup(fileWith(item, R"("deleted":{})")), std::nullopt);
}

TEST(Backup, OptionalKeysMayBeNullOrMissing) {
    for (const char* const key : {"category", "translatedTo", "sentAt", "sentVia", "durationSec", "device"}) {
        EXPECT_EQ(decodeBackup(fileWith(itemWith(key, "null"))), decodeBackup(fileWith(item))) << key;
    }
}

TEST(Backup, AnItemWithoutADeviceStaysWithoutIt) {
    const auto backup = decodeBackup(fileWith(item));
    ASSERT_TRUE(backup);
    EXPECT_EQ(backup->history.begin()->device, std::nullopt);
    EXPECT_FALSE(encodeBackup(*backup)->contains("device"));
}

TEST(Backup, UnknownKeysAndAnyOrderAndBlanksAreRead) {
    EXPECT_EQ(decodeBackup(R"( { "history" : [ {"raw":"r","x":{"y":[1,{}]},"createdAt":15e-1,
                              "id":"ABCDEF01-2345-6789-ABCD-000000000001","text":"\u0074"} ],
                              "z":[], "exportedAt":1, "version":2 } )"),
              decodeBackup(fileWith(item)));
}

TEST(Backup, TheOrderOfTheFileStays) {
    const auto read = again(backupOf({bareItem(2), bareItem(1), bareItem(3), bareItem(1)}));
    ASSERT_TRUE(read);
    EXPECT_EQ(numbersOf(read->history), (std::vector{2, 1, 3, 1}));
}

TEST(Backup, SevenHundredItemsComeBackInTheirOrder) {
    std::vector<HistoryItem> items;
    for (int number = 0; number < 700; ++number) {
        items.push_back(number % 3 == 0 ? fullItem(number) : bareItem(number));
    }
    const Backup backup = backupOf(items);
    EXPECT_EQ(again(backup), backup);
}

TEST(Backup, HostileBytesAreNoBackup) {
    const QByteArray deep(2'000'000, '[');
    const QByteArray many = fileWith(itemWith("x", QByteArray(5'000, '[') + QByteArray(5'000, ']')));
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray(" "), QByteArray("null"), QByteArray("[]"), QByteArray("{}"),
          QByteArray(1'000, '\0'), deep, many, fileWith(itemWith("createdAt", "1e400")),
          fileWith(itemWith("createdAt", "-1e99999999999")), fileWith(itemWith("createdAt", "NaN")),
          fileWith(itemWith("createdAt", "01")), fileWith(itemWith("text", "\"\xff\xfe\"")),
          fileWith(itemWith("text", "\"\xc0\xaf\"")), fileWith(itemWith("text", "\"\xed\xa0\x80\"")),
          fileWith(itemWith("text", R"("\ud800")")), fileWith(itemWith("text", "\"a\nb\"")),
          fileWith(item) + "x", fileWith(item) + fileWith(item)}) {
        EXPECT_EQ(decodeBackup(bytes), std::nullopt) << bytes.left(200).constData();
    }
}

TEST(Backup, NoTruncatedFileIsABackup) {
    Backup backup = backupOf({fullItem(1), bareItem(2, QString::fromUtf8("ü🎙"))});
    backup.deleted = {uuid(3)};
    const QByteArray whole = *encodeBackup(backup);
    for (qsizetype length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(decodeBackup(whole.left(length)), std::nullopt) << length;
    }
}

TEST(Backup, BytesThatAreSpoiltAtRandomNeverHarm) {
    Backup backup = backupOf({fullItem(1), bareItem(2, QString::fromUtf8("ü🎙"))});
    backup.deleted = {uuid(3)};
    const QByteArray whole = *encodeBackup(backup);
    std::mt19937 random(5);
    int read = 0;
    for (int round = 0; round < 20'000; ++round) {
        QByteArray spoilt = whole;
        for (unsigned changes = 1 + random() % 3; changes > 0; --changes) {
            spoilt[static_cast<qsizetype>(random() % static_cast<unsigned>(spoilt.size()))] =
                static_cast<char>(random());
        }
        const auto found = decodeBackup(spoilt);
        if (found) {
            ++read;
            EXPECT_EQ(again(*found), found) << spoilt.constData();
        }
    }
    EXPECT_GT(read, 0); // a letter of a text, for instance
}

} // namespace

} // namespace lorvane
