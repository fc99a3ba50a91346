// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/HttpText.h"
#include "api/Wire.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;

TEST(Wire, LinesAreJsonOnOneLine) {
    EXPECT_EQ(deltaLine(" a\n\"b\""), R"({"type":"delta","text":" a\n\"b\""})");
    EXPECT_EQ(doneLine({"Text.", "text", {}, {}}, std::nullopt),
              R"({"type":"done","text":"Text.","raw":"text"})");
    EXPECT_EQ(errorLine("no_speech"), R"({"type":"error","error":"no_speech"})");
}

TEST(Wire, BodiesAreJson) {
    EXPECT_EQ(dictatedBody({"Text.", "text", {}, {}}, std::nullopt), R"({"text":"Text.","raw":"text"})");
    EXPECT_EQ(tokenBody("abc"), R"({"token":"abc"})");
    EXPECT_EQ(textBody(""), R"({"text":""})");
    EXPECT_EQ(errorBody("busy"), R"({"error":"busy"})");
}

TEST(Wire, ErrorsHaveTheStatusThatTheClientExpects) {
    EXPECT_EQ(meaningOf(DictationError::noSpeech).status, 422);
    EXPECT_EQ(meaningOf(DictationError::noSpeech).code, "no_speech");
    EXPECT_EQ(meaningOf(DictationError::tooLong).status, 413);
    EXPECT_EQ(meaningOf(DictationError::badAudio).status, 400);
    EXPECT_EQ(meaningOf(DictationError::languageUnavailable).status, 501);
    EXPECT_EQ(meaningOf(DictationError::engineFailed).status, 500);
    EXPECT_EQ(meaningOf(DictationError::stopped).status, 503);
}

TEST(Wire, ADeviceIsAUuidAndComesInUpperCase) {
    EXPECT_EQ(readDevice(R"({"device":"6f9619ff-8b86-d011-b42d-00c04fc964ff"})"),
              "6F9619FF-8B86-D011-B42D-00C04FC964FF");
    for (const char* body :
         {"", "{}", "[]", "3", R"({"device":3})", R"({"device":""})", R"({"device":"6F9619FF"})",
          R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FG"})",
          R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF0"})",
          R"({"device":"6F9619FF08B86-D011-B42D-00C04FC964FF"})",
          R"(["6F9619FF-8B86-D011-B42D-00C04FC964FF"])"})
        EXPECT_FALSE(readDevice(body)) << body;
}

TEST(HttpText, MediaTypesLoseCaseAndParameters) {
    EXPECT_EQ(mediaType("Application/JSON ; charset=utf-8"), "application/json");
    EXPECT_EQ(mediaType(""), "");
}

TEST(HttpText, OnlyBearerTokensAreTokens) {
    EXPECT_EQ(bearerToken("Bearer abc"), "abc");
    EXPECT_EQ(bearerToken("bearer abc"), "abc");
    for (const char* other : {"", "Bearer", "Bearer ", "Basic abc", "abc"})
        EXPECT_EQ(bearerToken(other), "") << other;
}

TEST(HttpText, ATakeIdIsShortAndPrintable) {
    EXPECT_EQ(usableHeaderWord("6F9619FF-8B86-D011-B42D-00C04FC964FF"),
              "6F9619FF-8B86-D011-B42D-00C04FC964FF");
    EXPECT_EQ(usableHeaderWord(std::string(65, 'a')), "");
    EXPECT_EQ(usableHeaderWord("a b"), "");
    EXPECT_EQ(usableHeaderWord("a\x01"), "");
    EXPECT_EQ(usableHeaderWord("\xc3\xa9"), "");
}
