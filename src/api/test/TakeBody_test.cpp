// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeBody.h"

#include "api/EndpointURLs.h"
#include "api/testing/FakeHttpClient.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

using namespace lorvane;

namespace {

class TakeBody : public ::testing::Test {
 protected:
    QJsonObject fields(DictationRequest request) {
        request.ext = "m4a";
        return takeFields(request, foundation.preferences);
    }
    QString language(const char* stored) {
        foundation.preferences.set(preference::speakLang, QString(stored));
        return fields({}).value("lang").toString("absent");
    }
    TestFoundation foundation;
};

TEST_F(TakeBody, ExtAloneAndAThousandBytesMakeTheStatedFrame) {
    HttpRequest request;
    const QByteArray audio(1000, 'a');
    attachTake(request, fields({}), audio);
    EXPECT_EQ(request.body.size(), 4 + 13 + 1000);
    EXPECT_EQ(request.body.left(4), QByteArray("\x00\x00\x00\x0D", 4));
    EXPECT_EQ(request.body.mid(4, 13), R"({"ext":"m4a"})");
    EXPECT_EQ(request.body.mid(17), audio);
    EXPECT_EQ(header(request, "Content-Type"), "application/vnd.tirra.take");
}

TEST_F(TakeBody, AudioMayBeEmptyAndHoldAnyByte) {
    HttpRequest request;
    const QByteArray audio("\0\n\xff{", 4);
    attachTake(request, fields({}), audio);
    EXPECT_EQ(request.body.mid(17), audio);
    HttpRequest empty;
    attachTake(empty, fields({}), {});
    EXPECT_EQ(empty.body.size(), 17);
}

TEST_F(TakeBody, FieldsThatCannotBeFramedGoAsJsonWithTheAudioInBase64) {
    int calls = 0;
    HttpRequest request;
    attachTake(request, fields({}), "audio", [&calls](const QJsonObject& object) {
        return calls++ == 0 ? std::nullopt : compactJson(object);
    });
    EXPECT_EQ(header(request, "Content-Type"), "application/json");
    const QJsonObject expected{{"ext", "m4a"}, {"audio", "YXVkaW8="}};
    EXPECT_EQ(QJsonDocument::fromJson(request.body).object(), expected);
}

TEST_F(TakeBody, WhatCannotBeWrittenAtAllGoesWithoutABody) {
    HttpRequest request;
    attachTake(request, fields({}), "audio", [](const QJsonObject&) { return std::nullopt; });
    EXPECT_EQ(header(request, "Content-Type"), "application/json");
    EXPECT_TRUE(request.body.isEmpty());
}

TEST_F(TakeBody, TranslateNeedsTwoCharacters) {
    const auto translate = [this](std::optional<QString> language) {
        DictationRequest request;
        request.translate = std::move(language);
        return fields(request).value("translate").toString("absent");
    };
    EXPECT_EQ(translate(std::nullopt), "absent");
    EXPECT_EQ(translate(""), "absent");
    EXPECT_EQ(translate("d"), "absent");
    EXPECT_EQ(translate("de"), "de");
}

TEST_F(TakeBody, LanguageGoesInLowerCaseAndOnlyIfKnown) {
    EXPECT_EQ(fields({}).value("lang").toString("absent"), "absent");
    EXPECT_EQ(language("EN"), "en");
    EXPECT_EQ(language("Yue"), "yue");
    EXPECT_EQ(language("zu"), "zu");
    EXPECT_EQ(language("auto"), "absent");
    EXPECT_EQ(language("xx"), "absent");
    EXPECT_EQ(language(""), "absent");
    EXPECT_EQ(language(" en"), "absent");
}

TEST_F(TakeBody, AHundredLanguagesAreKnown) {
    int known = 0;
    for (char first = 'a'; first <= 'z'; ++first) {
        for (char second = 'a'; second <= 'z'; ++second) {
            const char code[] = {first, second, 0};
            known += language(code) == code ? 1 : 0;
        }
    }
    for (const char* code : {"yue", "ast", "ceb", "fil", "kea", "luo", "nso", "umb"}) {
        EXPECT_EQ(language(code), code);
    }
    EXPECT_EQ(known + 8, 100);
}

TEST_F(TakeBody, StyleIsTrimmedAndCutToItsFirstCharacters) {
    const auto style = [this](const QString& stored) {
        foundation.preferences.set(preference::style, stored);
        return fields({}).value("style").toString("absent");
    };
    EXPECT_EQ(style(" \n\t "), "absent");
    EXPECT_EQ(style("\n terse \n"), "terse");
    EXPECT_EQ(style(QString(600, 'a') + QString(100, 'b')), QString(600, 'a'));
    EXPECT_EQ(style(QString(600, 'a')), QString(600, 'a'));
    const QString smile = QString::fromUtf8("\U0001F600");
    EXPECT_EQ(style(smile.repeated(700)), smile.repeated(600));
}

TEST_F(TakeBody, ContextIsCutToItsLastCharacters) {
    const auto context = [this](const QString& text) {
        return partFields("m4a", text, foundation.preferences).value("context").toString("absent");
    };
    EXPECT_EQ(context(""), "absent");
    EXPECT_EQ(context("short"), "short");
    EXPECT_EQ(context(QString(100, 'a') + QString(600, 'b')), QString(600, 'b'));
    const QString accent = QString::fromUtf8("e\u0301");
    EXPECT_EQ(context("xyz" + accent.repeated(600)), accent.repeated(600));
}

TEST_F(TakeBody, EachKindOfRequestHasItsOwnFields) {
    foundation.preferences.set(preference::style, QString("terse"));
    foundation.preferences.set(preference::speakLang, QString("de"));
    const QJsonObject take{{"ext", "m4a"}, {"lang", "de"}, {"style", "terse"}, {"prefix", "so far "}};
    DictationRequest request;
    request.prefix = "so far ";
    EXPECT_EQ(fields(request), take);
    const QJsonObject part{{"ext", "wav"}, {"lang", "de"}, {"context", "so far "}};
    EXPECT_EQ(partFields("wav", "so far ", foundation.preferences), part);
}

TEST(EndpointURLs, StandOnTheBase) {
    const EndpointURLs urls = endpointURLs(QUrl("http://127.0.0.1:4242"));
    EXPECT_EQ(urls.registerURL.toString(), "http://127.0.0.1:4242/api/register");
    EXPECT_EQ(urls.dictateURL.toString(), "http://127.0.0.1:4242/api/dictate");
    EXPECT_EQ(urls.dictateStreamURL.toString(), "http://127.0.0.1:4242/api/dictate-stream");
    EXPECT_EQ(urls.transcribePartURL.toString(), "http://127.0.0.1:4242/api/transcribe-part");
    EXPECT_EQ(urls.onboardedURL.toString(), "http://127.0.0.1:4242/api/onboarded");
    EXPECT_EQ(urls.linkURL.toString(), "http://127.0.0.1:4242/api/link");
    EXPECT_EQ(urls.referralURL.toString(), "http://127.0.0.1:4242/api/referral");
    EXPECT_EQ(urls.inviteURL.toString(), "http://127.0.0.1:4242/api/invite");
    EXPECT_EQ(urls.insightsURL.toString(), "http://127.0.0.1:4242/api/insights");
    EXPECT_EQ(urls.summaryURL.toString(), "http://127.0.0.1:4242/api/summary");
    EXPECT_EQ(urls.translateURL.toString(), "http://127.0.0.1:4242/api/translate");
    EXPECT_EQ(urls.feedbackURL.toString(), "http://127.0.0.1:4242/api/feedback");
}

TEST(EndpointURLs, ABaseMayHaveAPathAndASlash) {
    EXPECT_EQ(endpointURLs(QUrl("https://h.example/lorvane/")).dictateURL.toString(),
              "https://h.example/lorvane/api/dictate");
    EXPECT_EQ(endpointURLs(QUrl("https://h.example/")).dictateURL.toString(),
              "https://h.example/api/dictate");
}

TEST(EndpointURLs, NoBaseGivesNone) {
    EXPECT_TRUE(endpointURLs(QUrl()).dictateURL.isEmpty());
    EXPECT_TRUE(endpointURLs(QUrl("nonsense")).dictateURL.isEmpty());
}

} // namespace
