// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/helper/HelperWire.h"

#include <gtest/gtest.h>

#include <vector>

namespace lorvane::helper {

namespace {

const std::vector<Message> everyKind{Hello{}, Commit{7, 0x01020304, "d\xC3\xA9j\xC3\xA0 \xF0\x9F\x98\x80"},
                                     ContextState{3, true}, Committed{0xFFFFFFFF, true}};

TEST(HelperWire, ReadsWhatItWrites) {
    for (const Message& message : everyKind) {
        Decoder decoder;
        decoder.feed(encode(message));
        EXPECT_EQ(decoder.next(), message);
        EXPECT_FALSE(decoder.next());
        EXPECT_FALSE(decoder.isBroken());
    }
}

TEST(HelperWire, WaitsForTheRestOfAMessage) {
    std::string all;
    for (const Message& message : everyKind) {
        all += encode(message);
    }
    Decoder decoder;
    std::vector<Message> read;
    for (const char byte : all) {
        decoder.feed({&byte, 1});
        while (const auto message = decoder.next()) {
            read.push_back(*message);
        }
    }
    EXPECT_EQ(read, everyKind);
    EXPECT_FALSE(decoder.isBroken());
}

TEST(HelperWire, BreaksAtWhatIsNoMessage) {
    using namespace std::string_literals;
    const std::vector<std::string> bad{
        "\x01\x00\x00\x01"s,                         // no such kind
        "\x01\x00\x05\x01"s,                         // no such kind
        "\xFF\xFF\x02"s,                             // longer than any
        "\x00\x00\x01"s,                             // a greeting without a version
        "\x07\x00\x02\x01\x00\x00\x00\x01\x00\x00"s, // a commit that ends in a number
        "\x04\x00\x03\x01\x00\x00\x00"s,             // a state without its flag
        "\x06\x00\x04\x01\x00\x00\x00\x01\x01"s};
    for (const std::string& bytes : bad) {
        Decoder decoder;
        decoder.feed(bytes);
        EXPECT_FALSE(decoder.next());
        EXPECT_TRUE(decoder.isBroken()) << ::testing::PrintToString(bytes);
        decoder.feed(encode(Hello{}));
        EXPECT_FALSE(decoder.next()) << "nothing follows what is no message";
    }
}

TEST(HelperWire, HandsOnTextThatIsTextOnly) {
    EXPECT_TRUE(isCommittable("a"));
    EXPECT_TRUE(isCommittable("\xC2\xA0\xE6\xBC\xA2\xF0\x9F\x98\x80"));
    EXPECT_TRUE(isCommittable(std::string(longestText, 'a')));
    for (const std::string& bad :
         {std::string(), std::string(longestText + 1, 'a'), std::string("a\nb"), std::string("\t"),
          std::string("\x7F"), std::string("\xC2\x85"), std::string("a\0b", 3), std::string("\xC3"),
          std::string("\xE6\xBC"), std::string("\x80"), std::string("\xC0\x80"), std::string("\xED\xA0\x80"),
          std::string("\xF4\x90\x80\x80"), std::string("\xFF")}) {
        EXPECT_FALSE(isCommittable(bad)) << ::testing::PrintToString(bad);
    }
}

} // namespace

} // namespace lorvane::helper
