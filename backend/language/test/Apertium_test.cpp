// SPDX-License-Identifier: GPL-3.0-or-later
// The installed apertium with the pairs eng-spa and rus-ukr, of which the second one crashes; and programs
// that behave as badly as one can.
#include "language/Apertium.h"
#include "testing/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {

class Fake {
 public:
    explicit Fake(const std::string& script) {
        std::ofstream(program()) << "#!/bin/sh\n" << script;
        std::filesystem::permissions(program(), std::filesystem::perms::owner_all);
    }
    std::filesystem::path program() const { return folder_ / "apertium"; }

 private:
    TemporaryFolder folder_;
};

constexpr const char* usual = "[ \"$1\" = -l ] && { echo eng-spa; exit; }\n";

} // namespace

TEST(Apertium, OnlyPairsThatWorkAreOffered) {
    ASSERT_TRUE(std::filesystem::exists("/usr/share/apertium/modes/rus-ukr.mode"))
        << "apertium-rus-ukr is wanted";
    Apertium apertium("/usr/bin/apertium");
    EXPECT_FALSE(apertium.speaks("en", "es")) << "before it was tried";
    EXPECT_EQ(apertium.translate("Hello.", "en", "es", {}).reason, "the translator is being started");
    apertium.findPairs({});
    EXPECT_TRUE(apertium.speaks("en", "es"));
    EXPECT_TRUE(apertium.speaks("", "es"));
    EXPECT_TRUE(apertium.speaks("en-GB", "es-MX"));
    EXPECT_TRUE(apertium.speaks("es", "en"));
    EXPECT_FALSE(apertium.speaks("ru", "uk")) << "it says nothing, and ends well";
    EXPECT_FALSE(apertium.speaks("en", "de"));
}

TEST(Apertium, ATextIsTranslatedAndItsLanguageFound) {
    Apertium apertium("/usr/bin/apertium");
    apertium.findPairs({});
    EXPECT_EQ(apertium.translate("The house is big.", "en", "es", {}).text, "La casa es grande.");
    EXPECT_EQ(apertium.translate("The house is big.", "", "es", {}).text, "La casa es grande.");
    EXPECT_EQ(apertium.translate("Two *stars* [and] ^signs$ {here}.\n\nNew line.", "en", "es", {}).reason,
              "");
    const auto foreign = apertium.translate("Das Haus steht am Ufer eines tiefen Sees.", "", "es", {});
    EXPECT_EQ(foreign.text, "");
    EXPECT_FALSE(foreign.reason.empty());
    EXPECT_EQ(apertium.translate("The house.", "en", "de", {}).text, "");
}

TEST(Apertium, AProgramThatIsNotThereOrFailsOffersNothing) {
    for (const auto& script :
         {std::string("exit 1\n"), std::string(usual) + "cat >/dev/null\n", std::string(usual) + "cat\n",
          std::string(usual) + "echo '*The *house *is'\n", std::string(usual) + "echo '@house #is'\n",
          std::string(usual) + "kill -SEGV $$\n", std::string(usual) + "yes\n"}) {
        const Fake fake(script);
        Apertium apertium(fake.program());
        apertium.findPairs({});
        EXPECT_FALSE(apertium.speaks("en", "es")) << script;
    }
    Apertium absent("/nowhere/apertium");
    absent.findPairs({});
    EXPECT_EQ(absent.translate("Hello.", "en", "es", {}).reason,
              "no pair for this language is installed here");
}

TEST(Apertium, APairThatFailsLaterSaysSo) {
    const Fake fake(std::string(usual) + "read text; [ \"$text\" = crash ] || echo 'La casa es grande.'\n");
    Apertium apertium(fake.program());
    apertium.findPairs({});
    ASSERT_TRUE(apertium.speaks("en", "es"));
    const auto translation = apertium.translate("crash", "en", "es", {});
    EXPECT_EQ(translation.text, "");
    EXPECT_FALSE(translation.reason.empty());
}
