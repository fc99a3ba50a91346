// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Goal.h"
#include "api/JsonBody.h"
#include "api/Markup.h"
#include "api/Metrics.h"
#include "api/ReleaseFeed.h"
#include "testing/TemporaryFolder.h"
#include "util/Base64.h"
#include "util/Signature.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace std::chrono_literals;
using lorvane::backend::testing::TemporaryFolder;

namespace {

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

// RFC 8032 section 7.1, test 2: the message is the one byte 0x72.
const std::string publicKey = fromHex("3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c");
const std::string signature = fromHex("92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da"
                                      "085ac1e43e15996e458f3613d0f11d8c387b2eaeb4302aeeb00d291612bb0c00");

} // namespace

TEST(DailyGoal, IsForThoseWhoDictateOnATelephone) {
    EXPECT_FALSE(goalOf({}, 100, 50));
    EXPECT_FALSE(goalOf({{100, 60}}, 100, 0)) << "no goal is set";
    const auto today = goalOf({{100, 60}}, 100, 50);
    ASSERT_TRUE(today);
    EXPECT_EQ(today->phoneWords, 60);
    EXPECT_EQ(today->goal, 50);
    EXPECT_TRUE(today->met);
    EXPECT_EQ(today->streak, 1);
}

TEST(DailyGoal, AStreakLivesThroughADayThatIsNotOverYet) {
    const auto ahead = goalOf({{130, 70}, {100, 60}, {99, 50}}, 100, 50);
    EXPECT_EQ(ahead->phoneWords, 60) << "a day that a wrong clock gave does not hide today";
    EXPECT_EQ(ahead->streak, 2);
    const auto open = goalOf({{100, 10}, {99, 50}, {98, 80}, {96, 80}}, 100, 50);
    EXPECT_FALSE(open->met);
    EXPECT_EQ(open->phoneWords, 10);
    EXPECT_EQ(open->streak, 2);
    EXPECT_EQ(goalOf({{100, 50}, {99, 50}, {98, 80}, {96, 80}}, 100, 50)->streak, 3);
    const auto without = goalOf({{99, 50}}, 100, 50);
    EXPECT_EQ(without->phoneWords, 0);
    EXPECT_EQ(without->streak, 1);
    EXPECT_EQ(goalOf({{98, 50}}, 100, 50)->streak, 0);
    EXPECT_EQ(goalOf({{100, 60}, {99, 49}, {98, 60}}, 100, 50)->streak, 1);
}

TEST(LandingPage, KeepsTheCodeAndThePlace) {
    const auto page = landingPage("r=CODE2345&c=mac-app", "https://example.org/download");
    EXPECT_TRUE(has(page, R"(href="https://example.org/download?r=CODE2345&amp;c=mac-app")")) << page;
    EXPECT_TRUE(has(page, "<code>CODE2345</code>"));
    EXPECT_TRUE(has(landingPage("c=mac-app", "https://example.org/d?x=1"), "d?x=1&amp;c=mac-app\""));
    EXPECT_TRUE(has(landingPage("", "https://example.org/d"), "href=\"https://example.org/d\""));
    EXPECT_FALSE(has(landingPage("r=A", ""), "href"));
}

TEST(LandingPage, NothingOfAQueryBecomesMarkup) {
    const auto plain = landingPage("", "https://example.org/d");
    for (const std::string& query :
         {std::string("r=<script>alert(1)</script>"), std::string("r=\"onload=x"), std::string("r=%3Cb%3E"),
          "r=" + std::string(33, 'A'), std::string("r"), std::string("r="), std::string("rr=A"),
          std::string("&&=&"), std::string("x=r=A"), std::string("r=\0A", 4), std::string("r=\xff\xfe"),
          std::string(5000, '&')})
        EXPECT_EQ(landingPage(query, "https://example.org/d"), plain) << query;
}

TEST(Markup, IsEscaped) { EXPECT_EQ(escapedMarkup("a<b>&\"'\x01\n"), "a&lt;b&gt;&amp;&quot;&#39; \n"); }

TEST(Signature, IsThatOfTheRfcAndNoOther) {
    EXPECT_TRUE(ed25519Verifies(publicKey, "\x72", signature));
    EXPECT_FALSE(ed25519Verifies(publicKey, "\x73", signature));
    auto other = signature;
    other[3] = static_cast<char>(other[3] ^ 1);
    EXPECT_FALSE(ed25519Verifies(publicKey, "\x72", other));
    EXPECT_FALSE(ed25519Verifies(publicKey, "\x72", ""));
    EXPECT_FALSE(ed25519Verifies("", "\x72", signature));
    EXPECT_FALSE(ed25519Verifies(std::string(32, '\xff'), "\x72", signature));
}

class ReleaseFeedTest : public ::testing::Test {
 protected:
    void put(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    void release(const std::string& name) {
        put(name, "\x72");
        put(name + ".sig", encodeBase64(signature) + "\n");
    }
    TemporaryFolder folder_;
    ReleaseFeed feed_{{folder_ / "", "https://example.org/files", publicKey}};
};

TEST_F(ReleaseFeedTest, ThereIsNoneWithoutReleases) {
    EXPECT_FALSE(ReleaseFeed({}).xml());
    EXPECT_FALSE(ReleaseFeed({folder_ / "absent", "", publicKey}).xml());
    EXPECT_FALSE(feed_.xml());
    put("lorvane-1.0.deb", "\x72");
    EXPECT_FALSE(feed_.xml()) << "not signed";
}

TEST_F(ReleaseFeedTest, TheNewestComesFirstByItsNumbers) {
    for (const char* name : {"lorvane-1.9.deb", "lorvane-1.10.deb", "lorvane-1.2.3.tar.xz"})
        release(name);
    put("lorvane-1.10.deb.html", "<p>New & better</p>");
    const auto xml = feed_.xml().value();
    EXPECT_LT(xml.find("1.10.deb"), xml.find("1.9.deb"));
    EXPECT_LT(xml.find("1.9.deb"), xml.find("1.2.3.tar.xz"));
    EXPECT_TRUE(has(xml, "<description>&lt;p&gt;New &amp; better&lt;/p&gt;</description>"));
    EXPECT_TRUE(has(xml, "<enclosure url=\"https://example.org/files/lorvane-1.10.deb\" length=\"1\" "
                         "type=\"application/octet-stream\" sparkle:edSignature=\"" +
                             encodeBase64(signature) + "\"/>"));
    EXPECT_TRUE(has(xml, "<sparkle:version>1.10</sparkle:version>"));
}

TEST_F(ReleaseFeedTest, WhatDoesNotVerifyIsLeftOutAlsoAfterAChange) {
    release("lorvane-1.0.deb");
    release("lorvane-2.0.deb");
    EXPECT_TRUE(has(*feed_.xml(), "2.0.deb"));
    put("lorvane-2.0.deb", "tampered with");
    EXPECT_FALSE(has(*feed_.xml(), "2.0.deb"));
    EXPECT_TRUE(has(*feed_.xml(), "1.0.deb"));
    for (const char* name : {"lorvane-<x>.deb", "lorvane.deb", "lorvane-1..0.deb",
                             "lorvane-99999999999999999999.deb", ".hidden-1.0.deb", "lorvane-3.0.deb.html"})
        release(name);
    EXPECT_FALSE(has(*feed_.xml(), "3.0"));
    EXPECT_EQ(feed_.xml()->find("<item>"), feed_.xml()->rfind("<item>"));
}

TEST(MetricsText, CountsByRouteAndStatus) {
    Metrics metrics;
    metrics.addGauge("lorvane_connections", "Open connections.", [] { return 3; });
    metrics.countRequest("POST /api/dictate", 200, 40ms);
    metrics.countRequest("POST /api/dictate", 200, 2000ms);
    metrics.countRequest("POST /api/dictate", 0, 10ms);
    metrics.countAudio(2.5);
    const auto text = metrics.text();
    for (const char* line :
         {"# TYPE lorvane_connections gauge\nlorvane_connections 3\n", "lorvane_audio_seconds_total 2.5\n",
          "lorvane_requests_total{route=\"POST /api/dictate\",status=\"200\"} 2\n",
          "lorvane_requests_total{route=\"POST /api/dictate\",status=\"gone\"} 1\n",
          "lorvane_request_seconds_bucket{route=\"POST /api/dictate\",le=\"0.01\"} 1\n",
          "lorvane_request_seconds_bucket{route=\"POST /api/dictate\",le=\"0.05\"} 2\n",
          "lorvane_request_seconds_bucket{route=\"POST /api/dictate\",le=\"+Inf\"} 3\n",
          "lorvane_request_seconds_sum{route=\"POST /api/dictate\"} 2.05\n",
          "lorvane_request_seconds_count{route=\"POST /api/dictate\"} 3\n"})
        EXPECT_TRUE(has(text, line)) << line << text;
}

TEST(JsonBodyTest, WhatIsNotAsAskedForIsRefusedByItsKey) {
    const JsonBody body(R"({"a":"text","n":1,"l":["x","y"],"bad":["x",1],"m":{"k":"v"},"mm":{"k":1}})");
    EXPECT_EQ(body.text("a", 4), "text");
    EXPECT_EQ(body.optionalText("absent", 4), std::nullopt);
    EXPECT_EQ(body.texts("l", 2), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(body.textMap("m", 1), (std::map<std::string, std::string>{{"k", "v"}}));
    EXPECT_TRUE(body.textMap("absent", 1).empty());
    EXPECT_THROW(body.text("a", 3), BadBody);
    EXPECT_THROW(body.text("n", 3), BadBody);
    EXPECT_THROW(body.text("absent", 3), BadBody);
    EXPECT_THROW(body.optionalText("n", 3), BadBody);
    EXPECT_THROW(body.texts("a", 3), BadBody);
    EXPECT_THROW(body.texts("l", 1), BadBody);
    EXPECT_THROW(body.texts("bad", 9), BadBody);
    EXPECT_THROW(body.textMap("l", 9), BadBody);
    EXPECT_THROW(body.textMap("mm", 9), BadBody);
    EXPECT_THROW(body.textMap("m", 0), BadBody);
    for (const std::string& text :
         {std::string(), std::string("["), std::string("[]"), std::string("null"),
          std::string("{\"a\":\"\xff\"}"), std::string(100'000, '['), std::string("{\"a\":1}x")})
        EXPECT_THROW(JsonBody{text}, BadBody) << text.substr(0, 20);
    try {
        body.text("n", 3);
    } catch (const BadBody& bad) {
        EXPECT_STREQ(bad.what(), "bad n");
    }
}
