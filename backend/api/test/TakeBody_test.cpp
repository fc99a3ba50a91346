// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeBody.h"
#include "testing/Connection.h"
#include "util/Base64.h"

#include <gtest/gtest.h>
#include <random>

using namespace lorvane::backend;
using lorvane::backend::testing::framedTake;

namespace {

constexpr const char* framed = "application/vnd.tirra.take";
constexpr const char* json = "application/json";

std::string reasonOf(const std::string& type, const std::string& body) {
    const auto take = readTake(type, body);
    const auto* malformed = std::get_if<MalformedTake>(&take);
    return malformed ? std::string(malformed->reason) : "";
}

std::string length(std::uint32_t n) {
    return {static_cast<char>(n >> 24), static_cast<char>(n >> 16), static_cast<char>(n >> 8),
            static_cast<char>(n)};
}

} // namespace

TEST(TakeBody, AFramedTakeGivesItsFieldsAndItsAudio) {
    const auto body =
        framedTake(R"({"ext":"m4a","lang":"en","prefix":"so","style":"s","translate":"de","context":"c"})",
                   "audio bytes");
    const auto take = readTake(framed, body);
    ASSERT_TRUE(std::holds_alternative<Take>(take));
    const auto& fields = std::get<Take>(take).fields;
    EXPECT_EQ(fields.ext, "m4a");
    EXPECT_EQ(fields.lang, "en");
    EXPECT_EQ(fields.prefix, "so");
    EXPECT_EQ(fields.style, "s");
    EXPECT_EQ(fields.translate, "de");
    EXPECT_EQ(fields.context, "c");
    EXPECT_EQ(std::get<Take>(take).audioBytes(), "audio bytes");
}

TEST(TakeBody, AJsonTakeGivesTheSame) {
    const auto take =
        readTake(json, R"({"audio":")" + encodeBase64(std::string("\0\1\2", 3)) + R"(","ext":"wav"})");
    ASSERT_TRUE(std::holds_alternative<Take>(take));
    EXPECT_EQ(std::get<Take>(take).fields.ext, "wav");
    EXPECT_EQ(std::get<Take>(take).audioBytes(), std::string("\0\1\2", 3));
}

TEST(TakeBody, NoAudioAfterTheFieldsIsAnEmptyTake) {
    const auto body = framedTake(R"({"ext":"wav"})", "");
    const auto take = readTake(framed, body);
    ASSERT_TRUE(std::holds_alternative<Take>(take));
    EXPECT_TRUE(std::get<Take>(take).audioBytes().empty());
}

TEST(TakeBody, UnknownFieldsAreIgnored) {
    EXPECT_EQ(reasonOf(framed, framedTake(R"({"ext":"wav","future":{"a":[1]}})", "x")), "");
}

TEST(TakeBody, MalformedBodiesAreToldApart) {
    const std::string tooLong = R"({"ext":"wav","style":")" + std::string(64 * 1024, 'x') + "\"}";
    const std::tuple<std::string, std::string, std::string> table[] = {
        {framed, "", "shorter than its length field"},
        {framed, std::string(3, '\0'), "shorter than its length field"},
        {framed, length(14) + R"({"ext":"wav"})", "shorter than its fields"},
        {framed, length(0xffffffff), "fields too long"},
        {framed, length(0xffffffff) + std::string(100, 'x'), "fields too long"},
        {framed, length(64 * 1024 + 1) + std::string(70'000, ' '), "fields too long"},
        {framed, framedTake(tooLong, ""), "fields too long"},
        {framed, length(0), "fields are not a JSON object"},
        {framed, framedTake("not json", "audio"), "fields are not a JSON object"},
        {framed, framedTake("[]", "audio"), "fields are not a JSON object"},
        {framed, framedTake(R"({"ext":"wav"} x)", "audio"), "fields are not a JSON object"},
        {framed, framedTake("{\"ext\":\"\xff\xfe\"}", "audio"), "fields are not a JSON object"},
        {framed, framedTake(std::string(60'000, '['), "audio"), "fields are not a JSON object"},
        {framed, framedTake("{}", "audio"), "no ext"},
        {framed, framedTake(R"({"ext":""})", "audio"), "no ext"},
        {framed, framedTake(R"({"ext":3})", "audio"), "a field is not a string"},
        {framed, framedTake(R"({"ext":"wav","prefix":null})", "audio"), "a field is not a string"},
        {json, "", "not a JSON object"},
        {json, "3", "not a JSON object"},
        {json, R"({"ext":"wav"})", "no audio"},
        {json, R"({"ext":"wav","audio":3})", "no audio"},
        {json, R"({"ext":"wav","audio":"???"})", "audio is not base64"},
        {json, R"({"audio":""})", "no ext"},
        {"", "", "unknown content type"},
        {"text/plain", framedTake(R"({"ext":"wav"})", ""), "unknown content type"},
    };
    for (const auto& [type, body, reason] : table)
        EXPECT_EQ(reasonOf(type, body), reason) << body.substr(0, 40);
}

TEST(TakeBody, ABodyThatIsWorthMoreMemoryThanItsBytesIsRefused) {
    std::string list = R"({"ext":"wav","audio":"","list":[1)";
    for (int i = 0; i < 1'000'000; ++i)
        list += ",1"; // 16 bytes of memory each
    EXPECT_EQ(reasonOf(json, list + "]}"), "not a JSON object");
    const auto audio = encodeBase64(std::string(3'000'000, '\xff')); // all of it slashes
    EXPECT_EQ(reasonOf(json, R"({"ext":"wav","audio":")" + audio + "\"}"), "");
    std::string escaped;
    for (const char c : audio)
        escaped += std::string("\\") + c;
    EXPECT_EQ(reasonOf(json, R"({"ext":"wav","audio":")" + escaped + "\"}"), "");
}

// Whatever the bytes are, the audio is part of the body and nothing outside it is touched.
TEST(TakeBody, RandomFramingsAreReadOrRefused) {
    std::mt19937 random(11);
    const std::string pieces[] = {R"({"ext":"wav"})", R"({"ext":)", "{", "}", "\"", "\\u12", "null",
                                  "\xf0\x28",         "[[[["};
    int readable = 0;
    for (int round = 0; round < 50'000; ++round) {
        std::string middle = random() % 2 ? R"({"ext":"wav"})" : "";
        for (auto k = middle.empty() ? random() % 4 : random() % 2; k > 0; --k)
            middle += pieces[random() % std::size(pieces)];
        std::string body = framedTake(middle, std::string(random() % 50, 'a'));
        for (auto k = random() % 3; k > 0 && !body.empty(); --k)
            body[random() % std::min<std::size_t>(body.size(), 24)] = static_cast<char>(random());
        body.resize(random() % 4 ? body.size() : random() % (body.size() + 1));
        const auto take = readTake(round % 5 ? framed : json, body);
        if (const auto* good = std::get_if<Take>(&take)) {
            ++readable;
            ASSERT_LE(good->audioBytes().size(), body.size());
        }
    }
    EXPECT_GT(readable, 1000);
}
