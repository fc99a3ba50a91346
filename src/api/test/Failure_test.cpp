// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Failure.h"

#include <gtest/gtest.h>

using namespace lorvane;

namespace {

constexpr const char* offlineText = "Couldn't connect to Lorvane. Check your internet.";

TEST(Failure, EachHasItsText) {
    using enum Failure::Kind;
    using enum RegistrationFailure;
    const Localisation words;
    EXPECT_EQ(errorDescription({noToken, offline}, words), offlineText);
    EXPECT_EQ(errorDescription({noToken, std::nullopt}, words), offlineText);
    EXPECT_EQ(
        errorDescription({noToken, refused}, words),
        QString::fromUtf8("Lorvane couldn't finish setting up on this Mac. Please try again — and if it "
                          "keeps happening, get in touch and we'll sort it out."));
    EXPECT_EQ(errorDescription({noToken, busy}, words),
              "Lorvane is setting up a lot of new devices right now. Please try again a little later.");
    EXPECT_EQ(errorDescription({noSpeech, std::nullopt}, words),
              QString::fromUtf8("Didn't catch any speech — try again."));
    EXPECT_EQ(errorDescription({server, std::nullopt}, words), "Lorvane had a hiccup. Please try again.");
    EXPECT_EQ(errorDescription({tooManyRequests, std::nullopt}, words),
              "Too many dictations right now. Please try again later.");
    EXPECT_EQ(errorDescription({tooLong, std::nullopt}, words),
              "That recording is too long to send in one go. Try shorter takes.");
}

TEST(Failure, TheWordsGoThroughTheTable) {
    const auto words = Localisation::fromJson(R"({"Lorvane had a hiccup. Please try again.":"hicks"})");
    ASSERT_TRUE(words.has_value());
    EXPECT_EQ(errorDescription({Failure::Kind::server, std::nullopt}, *words), "hicks");
}

TEST(Failure, ComparesWithItsReason) {
    using enum Failure::Kind;
    EXPECT_EQ((Failure{noToken, RegistrationFailure::busy}), (Failure{noToken, RegistrationFailure::busy}));
    EXPECT_NE((Failure{noToken, RegistrationFailure::busy}),
              (Failure{noToken, RegistrationFailure::offline}));
    EXPECT_NE((Failure{noToken, RegistrationFailure::offline}), (Failure{noToken, std::nullopt}));
    EXPECT_NE((Failure{server, std::nullopt}), (Failure{tooLong, std::nullopt}));
}

} // namespace
