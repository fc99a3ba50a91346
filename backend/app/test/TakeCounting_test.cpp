// SPDX-License-Identifier: GPL-3.0-or-later
// Which takes count, and for what.
#include "testing/BackendUnderTest.h"
#include "testing/ScriptedEngine.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {

const std::string& sound() {
    static const auto file = wavFile(tone(1.0, 0.3));
    return file;
}

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

BackendOptions limited() {
    BackendOptions options;
    options.service.limits.takes = Rate::perHour(2);
    options.service.phoneGoal = 3;
    return options;
}

class TakeCounting : public ::testing::Test {
 protected:
    ScriptedEngine::Record record_;
    BackendUnderTest backend_{
        std::make_unique<ScriptedEngine>(std::vector<std::string>{"two words"}, record_), limited()};
    std::uint16_t port_ = backend_.port();
    std::string token_ = backend_.registerDevice();

    Reply phoneTake(const std::string& endpoint, const std::string& takeId, const std::string& token) {
        auto call = backend_.take(endpoint, token, sound(), takeId);
        call.extraHeaders = "X-Tirra-Platform: phone\r\n";
        return request(port_, call);
    }
};

} // namespace

TEST_F(TakeCounting, TakesOverTheLimitAreRefusedAndAnAgainIsNone) {
    EXPECT_EQ(request(port_, backend_.take("dictate-stream", token_, sound(), "one")).status, 200);
    EXPECT_EQ(request(port_, backend_.take("dictate-stream", token_, sound(), "two")).status, 200);
    const auto over = request(port_, backend_.take("dictate", token_, sound(), "three"));
    EXPECT_EQ(over.status, 429);
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, sound(), "three")).status, 429)
        << "nor the second time";
    const auto stream = request(port_, backend_.take("dictate-stream", token_, sound(), "four"));
    EXPECT_EQ(stream.status, 200);
    EXPECT_EQ(stream.body, "{\"type\":\"error\",\"error\":\"dictate_limit\"}\n");
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, sound(), "two")).status, 200)
        << "the upload after a broken stream";
    EXPECT_EQ(
        request(port_, backend_.take("dictate", backend_.registerDevice(deviceTwo), sound(), "three")).status,
        200);
}

TEST_F(TakeCounting, AnotherContentUnderAnIdThatWasUsedIsAnotherTake) {
    const auto other = wavFile(tone(0.5, 0.3));
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, sound(), "one")).status, 200);
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, other, "one")).status, 200);
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, wavFile(tone(0.7, 0.3)), "one")).status, 429);
    for (const char* fields : {R"({"ext":"wav","lang":"en"})", R"({"ext":"wav","context":"so"})",
                               R"({"ext":"wav","style":"casual"})", R"({"ext":"wav","prefix":"so"})",
                               R"({"ext":"wav","translate":"de"})"})
        EXPECT_EQ(request(port_, backend_.take("dictate", token_, sound(), "one", fields)).status, 429)
            << fields;
    for (const auto& sameAsBefore : {sound(), other})
        EXPECT_EQ(request(port_, backend_.take("dictate", token_, sameAsBefore, "one")).status, 200);
    const auto phone = backend_.registerDevice(deviceTwo);
    EXPECT_TRUE(has(phoneTake("dictate", "p", phone).body, R"("phoneWords":2)"));
    auto second = backend_.take("dictate", phone, other, "p");
    second.extraHeaders = "X-Tirra-Platform: phone\r\n";
    EXPECT_TRUE(has(request(port_, second).body, R"("phoneWords":4)"));
}

TEST_F(TakeCounting, TheGoalCountsThePhoneWordsOfAllDevicesAndEachTakeOnce) {
    EXPECT_FALSE(has(request(port_, backend_.take("dictate", token_, sound(), "m1")).body, "goal"))
        << "who has no telephone has no such goal";
    const auto phone = backend_.registerDevice(deviceTwo);
    backend_.post("/api/link", phone, R"({"alias":")" + token_ + "\"}");
    EXPECT_TRUE(has(phoneTake("dictate-stream", "p1", phone).body,
                    R"("goal":{"phoneWords":2,"goal":3,"met":false,"streak":0})"));
    EXPECT_TRUE(has(phoneTake("dictate", "p1", phone).body, R"("phoneWords":2)")) << "the same take";
    auto mac = backend_.take("dictate", token_, sound(), "m1");
    mac.extraHeaders = "X-Tirra-Platform: mac\r\n";
    EXPECT_TRUE(has(request(port_, mac).body, R"("goal":{"phoneWords":2,"goal":3,"met":false,"streak":0})"));
}
