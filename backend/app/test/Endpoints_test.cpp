// SPDX-License-Identifier: GPL-3.0-or-later
// The endpoints beside the takes, over sockets, as their client and its enemies use them.
#include "testing/BackendUnderTest.h"
#include "testing/ScriptedEngine.h"
#include "testing/ServerUnderTest.h"
#include "testing/SmtpSink.h"
#include "testing/Sound.h"
#include "util/Base64.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {

const std::string& sound() {
    static const auto file = wavFile(tone(1.0, 0.3));
    return file;
}

std::string list(const std::vector<std::string>& texts) {
    std::string out;
    for (const auto& text : texts)
        out += (out.empty() ? "[\"" : ",\"") + text + '"';
    return out + ']';
}

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string bodyOf(const std::string& letter) {
    std::string base64;
    for (const char c : letter.substr(letter.find("\r\n\r\n")))
        if (c != '\r' && c != '\n')
            base64 += c;
    return decodeBase64(base64).value_or("not base64");
}

BackendOptions limited() {
    BackendOptions options;
    options.service.publicUrl = "https://lorvane.example";
    options.service.downloadUrl = "https://lorvane.example/download";
    options.service.feedbackTo = "team@lorvane.example";
    options.service.mailFrom = "service@lorvane.example";
    options.service.limits.invitations = Rate::perHour(3);
    options.service.limits.feedback = Rate::perHour(2);
    return options;
}

} // namespace

class EndpointsTest : public ::testing::Test {
 protected:
    ScriptedEngine::Record record_;
    BackendUnderTest backend_{
        std::make_unique<ScriptedEngine>(std::vector<std::string>{"two words"}, record_), limited()};
    std::uint16_t port_ = backend_.port();
    std::string token_ = backend_.registerDevice();

    int post(const std::string& path, const std::string& body) {
        return backend_.post(path, token_, body).status;
    }
    std::string code(const std::string& token) {
        return member(backend_.get("/api/referral", token).body, "code");
    }
};

TEST_F(EndpointsTest, ATokenIsWantedWhereverSomethingIsSomebodys) {
    for (const char* path :
         {"/api/dictate", "/api/dictate-stream", "/api/transcribe-part", "/api/onboarded", "/api/link",
          "/api/invite", "/api/insights", "/api/summary", "/api/translate", "/api/feedback"})
        for (const std::string& token : {std::string(), std::string(64, '0'), token_ + "0"}) {
            const auto reply = backend_.post(path, token, "{}");
            EXPECT_EQ(reply.status, 401) << path;
            EXPECT_EQ(member(reply.body, "error"), "unauthorized") << path;
        }
    EXPECT_EQ(backend_.get("/api/referral").status, 401);
    for (const char* path : {"/api/register", "/api/invite", "/api/link"})
        EXPECT_EQ(backend_.get(path, token_).status, 405) << path;
    EXPECT_EQ(post("/api/referral", "{}"), 405);
}

TEST_F(EndpointsTest, OnboardedTakesASourceOrNoBodyAtAll) {
    EXPECT_EQ(post("/api/onboarded", ""), 200);
    EXPECT_EQ(post("/api/onboarded", "{}"), 200);
    EXPECT_EQ(post("/api/onboarded", R"({"source":"a friend"})"), 200);
    for (const char* bad : {"x", "[]", R"({"source":1})", R"({"source":"<b>"})"})
        EXPECT_EQ(post("/api/onboarded", bad), 400) << bad;
    EXPECT_EQ(post("/api/onboarded", R"({"source":")" + std::string(65, 'a') + "\"}"), 400);
}

TEST_F(EndpointsTest, LinkMakesTwoTokensOnePerson) {
    const auto other = backend_.registerDevice(deviceTwo);
    const auto first = code(token_);
    EXPECT_NE(code(other), first);
    EXPECT_EQ(backend_.post("/api/link", other, R"({"alias":")" + token_ + "\"}").status, 200);
    EXPECT_EQ(code(other), first);
    EXPECT_EQ(code(token_), first);
    EXPECT_EQ(backend_.post("/api/link", other, R"({"alias":")" + token_ + "\"}").status, 200) << "again";
}

TEST_F(EndpointsTest, LinkToATokenThatNobodyHoldsIsRefused) {
    const auto before = code(token_);
    EXPECT_EQ(post("/api/link", R"({"alias":")" + std::string(64, 'a') + "\"}"), 404);
    for (const char* bad : {"", "{}", R"({"alias":1})", R"({"alias":["x"]})"})
        EXPECT_EQ(post("/api/link", bad), 400) << bad;
    EXPECT_EQ(post("/api/link", R"({"alias":")" + std::string(300, 'a') + "\"}"), 400);
    EXPECT_EQ(code(token_), before);
}

TEST_F(EndpointsTest, AReferralCodeIsReadableAndAlwaysTheSame) {
    const auto mine = code(token_);
    EXPECT_EQ(mine.size(), 8U);
    EXPECT_EQ(mine.find_first_not_of("23456789CDFGHJKMNPQRTVWX"), std::string::npos) << mine;
    EXPECT_EQ(code(token_), mine);
    EXPECT_EQ(code(backend_.registerDevice()), mine) << "another token of the same device";
    std::set<std::string> codes{mine};
    for (int i = 0; i < 50; ++i) {
        auto device = std::string(deviceTwo);
        device.replace(0, 3, std::to_string(100 + i));
        codes.insert(code(backend_.registerDevice(device)));
    }
    EXPECT_EQ(codes.size(), 51U);
}

TEST_F(EndpointsTest, AnInvitationIsALetterWithTheLink) {
    ASSERT_EQ(post("/api/invite", R"({"email":"ann@example.org","fromName":"Zoë Müller"})"), 200);
    const auto letters = backend_.letters();
    ASSERT_EQ(letters.size(), 1U);
    EXPECT_TRUE(has(letters[0], "To: <ann@example.org>\r\n"));
    EXPECT_TRUE(has(letters[0], "From: Lorvane <service@lorvane.example>\r\n"));
    EXPECT_TRUE(has(bodyOf(letters[0]), "Zoë Müller uses Lorvane"));
    EXPECT_TRUE(has(bodyOf(letters[0]), "https://lorvane.example/get?r=" + code(token_)));
}

TEST_F(EndpointsTest, AnInvitationToNoAddressIsInvalidAndCostsNothing) {
    for (const char* bad :
         {"", "{}", R"({"email":""})", R"({"email":"ann"})", R"({"email":7})",
          R"({"email":"ann@example.org\r\nBcc: eve@example.org"})",
          R"({"email":"ann@example.org","fromName":7})", R"({"email":"a@example.org,b@example.org"})"})
        EXPECT_EQ(post("/api/invite", bad), 400) << bad;
    EXPECT_TRUE(backend_.letters().empty());
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(post("/api/invite", R"({"email":"ann@example.org"})"), 200);
    EXPECT_EQ(post("/api/invite", R"({"email":"ann@example.org"})"), 429);
    EXPECT_EQ(
        backend_.post("/api/invite", backend_.registerDevice(), R"({"email":"ann@example.org"})").status, 429)
        << "a new token of the same person";
    EXPECT_EQ(backend_.post("/api/invite", backend_.registerDevice(deviceTwo), R"({"email":"b@example.org"})")
                  .status,
              200);
    EXPECT_EQ(backend_.letters().size(), 4U);
}

TEST_F(EndpointsTest, ANameCarriesNoLinkOfItsOwn) {
    for (const char* name : {"http://evil.example", "www.evil.example", "me <eve@evil.example>"})
        ASSERT_EQ(
            post("/api/invite", std::string(R"({"email":"ann@example.org","fromName":")") + name + "\"}"),
            200);
    for (const auto& letter : backend_.letters()) {
        EXPECT_FALSE(has(bodyOf(letter), "evil"));
        EXPECT_TRUE(has(letter, "Subject: A friend invites you to Lorvane\r\n"));
    }
}

TEST_F(EndpointsTest, FeedbackReachesTheTeamWithItsReplyAddress) {
    ASSERT_EQ(post("/api/feedback",
                   R"({"topic":"bug","message":"It stops.\nOften.","email":"ann@example.org",)"
                   R"("meta":{"version":"1.0","os":"Linux"}})"),
              200);
    const auto letter = backend_.letters().at(0);
    EXPECT_TRUE(has(letter, "To: <team@lorvane.example>\r\n"));
    EXPECT_TRUE(has(letter, "Reply-To: <ann@example.org>\r\n"));
    EXPECT_TRUE(has(letter, "Subject: Feedback: bug\r\n"));
    EXPECT_EQ(bodyOf(letter), "It stops.\r\nOften.\r\n\r\n--\r\nos: Linux\r\nversion: 1.0\r\n");
}

TEST_F(EndpointsTest, FeedbackWithoutAMessageIsRefusedAndAWrongAddressIsNot) {
    for (const char* bad :
         {"{}", R"({"topic":"bug","message":" \n","meta":{}})", R"({"topic":"bug","meta":{}})",
          R"({"topic":"bug","message":"x","meta":{"a":1}})", R"({"topic":1,"message":"x"})"})
        EXPECT_EQ(post("/api/feedback", bad), 400) << bad;
    EXPECT_EQ(
        post("/api/feedback", R"({"topic":"x\r\nBcc: eve@example.org","message":"m","email":"nowhere"})"),
        200);
    EXPECT_FALSE(has(backend_.letters().at(0), "\nBcc:"));
    EXPECT_FALSE(has(backend_.letters().at(0), "Reply-To"));
    EXPECT_TRUE(has(bodyOf(backend_.letters().at(0)), "email, as given: nowhere"));
    EXPECT_EQ(post("/api/feedback", R"({"topic":"a","message":"m"})"), 200);
    EXPECT_EQ(post("/api/feedback", R"({"topic":"a","message":"m"})"), 429);
}

TEST_F(EndpointsTest, MailThatCannotBeSentIsAFailure) {
    std::filesystem::remove_all(backend_.file("mail"));
    EXPECT_EQ(post("/api/invite", R"({"email":"ann@example.org"})"), 503);
    EXPECT_EQ(post("/api/feedback", R"({"topic":"a","message":"m"})"), 503);
}

TEST_F(EndpointsTest, InsightsHaveAllTheirKeysOrTooLittleToGoBy) {
    const auto reply = backend_.post("/api/insights", token_,
                                     R"({"samples":)" + list({"One two.", "Three four.", "Five."}) + '}');
    EXPECT_EQ(reply.status, 200);
    for (const char* key :
         {"\"summary\":\"In 3 messages", "\"strengths\":[", "\"suggestions\":[", "\"resources\":["})
        EXPECT_TRUE(has(reply.body, key)) << reply.body;
    EXPECT_EQ(post("/api/insights", R"({"samples":["One.","Two."]})"), 422);
    EXPECT_EQ(post("/api/insights", R"({"samples":["","",""]})"), 422);
    for (const char* bad : {"", "{}", R"({"samples":"x"})", R"({"samples":[1,2,3]})", R"({"samples":null})"})
        EXPECT_EQ(post("/api/insights", bad), 400) << bad;
}

TEST_F(EndpointsTest, ASummaryIsMadeOfTheTexts) {
    const auto reply =
        backend_.post("/api/summary", token_, R"({"texts":["The disk failed today."],"period":"week"})");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, R"({"summary":"The disk failed today."})");
    EXPECT_EQ(post("/api/summary", R"({"texts":[],"period":"week"})"), 422);
    for (const char* bad :
         {"{}", R"({"texts":["a"]})", R"({"texts":"a","period":"week"})", R"({"texts":["a"],"period":1})"})
        EXPECT_EQ(post("/api/summary", bad), 400) << bad;
}

TEST_F(EndpointsTest, LongTextsAreSummedUpInTimeAndLongerOnesRefused) {
    std::vector<std::string> many;
    for (int i = 0; i < 19'000; ++i)
        many.push_back("Note " + std::to_string(i) + " tells of item" + std::to_string(i % 70) +
                       " and of its price. Thanks.");
    const auto body = R"({"period":"all","texts":)" + list(many) + '}';
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(post("/api/summary", body), 200);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    std::printf("a summary of %zu KiB in %.2f s\n", body.size() / 1024, took.count());
    EXPECT_LT(took.count(), 20.0);
    EXPECT_EQ(post("/api/summary", std::string((std::size_t(4) << 20) + 1, ' ')), 413);
}

TEST_F(EndpointsTest, ATranslationIsRefusedWithTheReason) {
    const auto reply = backend_.post("/api/translate", token_, R"({"text":"Hello","target":"es"})");
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(member(reply.body, "error"), "translation_unavailable");
    EXPECT_FALSE(member(reply.body, "reason").empty());
    EXPECT_EQ(post("/api/translate", R"({"text":"Hello"})"), 400);
}

TEST_F(EndpointsTest, ThePublicPagesNeedNoTokenAndKeepTheCode) {
    const auto page = backend_.get("/get?r=CODE2345&c=mac-app");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.headers.at("content-type"), "text/html; charset=utf-8");
    EXPECT_TRUE(has(page.headers.at("content-security-policy"), "default-src 'none'"));
    EXPECT_TRUE(has(page.body, "https://lorvane.example/download?r=CODE2345&amp;c=mac-app"));
    EXPECT_FALSE(has(backend_.get("/get?r=%3Cscript%3E").body, "script"));
    EXPECT_EQ(backend_.get("/appcast.xml").status, 404);
    for (const char* path : {"/get/", "/get/../metrics", "//get", "/appcast.xml/", "/%67et", "/API/REFERRAL"})
        EXPECT_EQ(backend_.get(path).status, 404) << path;
}

TEST_F(EndpointsTest, ReadinessIsToldUntilTheEndIsAnnounced) {
    EXPECT_TRUE(eventually([&] { return backend_.get("/readyz").status == 200; }));
    backend_.backend().announceEnd();
    const auto reply = backend_.get("/readyz");
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(member(reply.body, "reason"), "ending");
    EXPECT_EQ(backend_.get("/healthz").status, 200);
    EXPECT_EQ(post("/api/onboarded", ""), 200) << "whoever still comes is served";
}

TEST_F(EndpointsTest, MetricsTellRoutesAndNoTokenNorText) {
    request(port_, backend_.take("dictate", token_, sound(), "the-take-id"));
    backend_.get("/" + token_);
    backend_.get("/get?r=SECRETCODE");
    post("/api/invite", R"({"email":"ann@example.org"})");
    const auto reply = backend_.get("/metrics");
    EXPECT_TRUE(has(reply.headers.at("content-type"), "version=0.0.4"));
    for (const char* line :
         {"lorvane_requests_total{route=\"POST /api/dictate\",status=\"200\"} 1\n",
          "lorvane_requests_total{route=\"unknown path\",status=\"404\"} 1\n",
          "lorvane_requests_total{route=\"GET /get\",status=\"200\"} 1\n", "lorvane_audio_seconds_total 1\n",
          "lorvane_connections ", "lorvane_takes_waiting 0\n"})
        EXPECT_TRUE(has(reply.body, line)) << line << reply.body;
    for (const std::string& secret : {token_, std::string("two words"), std::string("the-take-id"),
                                      std::string("SECRETCODE"), std::string("ann@"), std::string(deviceOne)})
        EXPECT_FALSE(has(reply.body, secret));
}

TEST_F(EndpointsTest, TheSameDeviceStaysTheSamePersonWithANewToken) {
    const auto mine = code(token_);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(code(backend_.registerDevice()), mine);
}

TEST_F(EndpointsTest, RandomBodiesDoNoHarm) {
    std::mt19937 random(11);
    const std::vector<std::pair<std::string, std::string>> good{
        {"/api/onboarded", R"({"source":"friend"})"},
        {"/api/link", R"({"alias":"0123456789"})"},
        {"/api/invite", R"({"email":"ann@example","fromName":"Ann"})"},
        {"/api/insights", R"({"samples":["One.","Two.","Three."]})"},
        {"/api/summary", R"({"texts":["One two three."],"period":"week"})"},
        {"/api/translate", R"({"text":"x","target":"de"})"},
        {"/api/feedback", R"({"topic":"bug","message":"m","meta":{"a":"b"}})"}};
    Connection connection(port_);
    std::map<int, int> statuses;
    for (int round = 0; round < 1400; ++round) {
        auto [path, body] = good[static_cast<std::size_t>(round) % good.size()];
        for (auto k = random() % 4; k > 0; --k)
            body[random() % body.size()] = static_cast<char>(random());
        if (round % 5 == 0)
            body.resize(random() % body.size());
        const auto reply = request(connection, {"POST", path, token_, "application/json", "", "", body});
        ++statuses[reply.status];
        ASSERT_TRUE(std::set({200, 400, 404, 422, 429, 503}).contains(reply.status)) << reply.status << body;
        ASSERT_TRUE(reply.status != 503 || path == "/api/translate") << path << body;
    }
    EXPECT_GT(statuses[400], 300);
    EXPECT_GT(statuses[200], 50);
}

TEST(EndpointsBusy, RegistrationsOverTheLimitAreBusyAndTheRestGoesOn) {
    ScriptedEngine::Record record;
    BackendOptions options;
    options.service.limits.registrations = Rate::perHour(2);
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{}, record), options);
    const auto token = backend.registerDevice();
    EXPECT_FALSE(backend.registerDevice(deviceTwo).empty());
    const auto reply =
        backend.post("/api/register", "", R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})");
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(member(reply.body, "error"), "busy");
    EXPECT_EQ(backend.post("/api/onboarded", token, "").status, 200);
}

TEST(EndpointsBusy, WhoRegistersTooOftenLeavesTheOthersTheirRegistrations) {
    ScriptedEngine::Record record;
    BackendOptions options;
    options.server.proxies = TrustedProxies::parse("127.0.0.1").value();
    options.service.limits.registrationsOfAddress = Rate::perHour(3);
    options.service.limits.registrations = Rate::perHour(8);
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{}, record), options);
    const auto registered = [&](const std::string& headers) {
        return request(backend.port(), {"POST", "/api/register", "", "application/json", "", headers,
                                        R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
            .status;
    };
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(registered("X-Forwarded-For: 198.51.100." + std::to_string(i) + ", 192.0.2.1\r\n"),
                  i < 3 ? 200 : 503)
            << i;
    EXPECT_EQ(registered("X-Forwarded-For: 192.0.2.9\r\nX-Forwarded-For: 192.0.2.1\r\n"), 503)
        << "in two lines";
    EXPECT_EQ(registered("X-Forwarded-For: 2001:db8::1\r\n"), 200);
    EXPECT_EQ(registered("X-Forwarded-For: 2001:db8::2\r\n"), 200);
    EXPECT_EQ(registered("X-Forwarded-For: 2001:db8::3\r\n"), 200);
    EXPECT_EQ(registered("X-Forwarded-For: 2001:db8:0:0:ffff::1\r\n"), 503) << "of the same customer";
    EXPECT_EQ(registered(""), 200) << "the proxy itself";
    EXPECT_EQ(registered("X-Forwarded-For: 192.0.2.2\r\n"), 200);
    EXPECT_EQ(registered("X-Forwarded-For: 192.0.2.3\r\n"), 503) << "all together have had theirs";
}

TEST(EndpointsBusy, AnAddressThatNobodyTrustedHasNamedIsNotBelieved) {
    ScriptedEngine::Record record;
    BackendOptions options;
    options.service.limits.registrationsOfAddress = Rate::perHour(1);
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{}, record), options);
    int answered = 0;
    for (const char* address : {"192.0.2.1", "192.0.2.2", "192.0.2.3"})
        answered += request(backend.port(), {"POST", "/api/register", "", "application/json", "",
                                             "X-Forwarded-For: " + std::string(address) + "\r\n",
                                             R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
                                .status == 200
                        ? 1
                        : 0;
    EXPECT_EQ(answered, 1);
}

TEST(EndpointsMail, LettersGoThroughTheMailServerThatIsConfigured) {
    const SmtpSink sink("tls");
    ScriptedEngine::Record record;
    auto options = limited();
    options.mail.smtp.emplace();
    options.mail.smtp->url = sink.url();
    options.mail.smtp->authorities = sink.certificate();
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{}, record), options);
    const auto token = backend.registerDevice();
    EXPECT_EQ(backend.post("/api/invite", token, R"({"email":"ann@example.org","fromName":"Bob"})").status,
              200);
    ASSERT_TRUE(sink.letter(0));
    EXPECT_TRUE(sink.letter(0)->starts_with("from=service@lorvane.example to=ann@example.org tls=True"))
        << *sink.letter(0);
    EXPECT_FALSE(std::filesystem::exists(backend.file("mail"))) << "no copy is kept";
}
