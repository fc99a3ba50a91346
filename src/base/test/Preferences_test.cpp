// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PreferenceCatalogue.h"
#include "base/testing/MemoryPreferenceStore.h"

#include <gtest/gtest.h>

#include <set>

using namespace lorvane;

namespace {

class TypedPreferences : public ::testing::Test {
 protected:
    MemoryPreferenceStore store;
    Preferences preferences{store};
};

TEST_F(TypedPreferences, AnAbsentKeyReadsAsItsDefaultAndIsToldFromFalse) {
    EXPECT_EQ(preferences.stored(preference::nudges), std::nullopt);
    EXPECT_TRUE(preferences.get(preference::nudges));
    preferences.set(preference::nudges, false);
    EXPECT_EQ(preferences.stored(preference::nudges), false);
    EXPECT_FALSE(preferences.get(preference::nudges));
    preferences.remove(preference::nudges);
    EXPECT_EQ(preferences.stored(preference::nudges), std::nullopt);
}

TEST_F(TypedPreferences, AnAbsentTextIsToldFromAnEmptyOne) {
    EXPECT_EQ(preferences.get(preference::toggleHotkey), "rightOption");
    preferences.set(preference::toggleHotkey, QString(""));
    EXPECT_EQ(preferences.stored(preference::toggleHotkey), QString(""));
    EXPECT_EQ(preferences.get(preference::toggleHotkey), "");
}

TEST_F(TypedPreferences, EveryTypeComesBack) {
    preferences.set(preference::recordLimit, 300);
    EXPECT_EQ(preferences.get(preference::recordLimit), 300);
    preferences.set(preference::nudgeLast, 789012345.678901);
    EXPECT_EQ(preferences.get(preference::nudgeLast), 789012345.678901);
    preferences.set(preference::speakLangs, QStringList{"en", "de"});
    EXPECT_EQ(preferences.get(preference::speakLangs), (QStringList{"en", "de"}));
    preferences.set(preference::manualSummaries, QByteArray("\0\xff", 2));
    EXPECT_EQ(preferences.get(preference::manualSummaries), QByteArray("\0\xff", 2));
    EXPECT_EQ(store.value("tirra.mac.manualSummaries"), QJsonValue("AP8="));
}

TEST_F(TypedPreferences, AValueOfAnotherTypeCountsAsAbsent) {
    store.setValue("tirra.mac.nudges", "no");
    store.setValue("tirra.mac.recordLimit", "5");
    store.setValue("tirra.mac.hotkey", 5);
    store.setValue("tirra.mac.speakLangs", QJsonArray{"en", 1});
    store.setValue("tirra.mac.manualSummaries", "no base64!");
    EXPECT_EQ(preferences.stored(preference::nudges), std::nullopt);
    EXPECT_EQ(preferences.get(preference::recordLimit), 0);
    EXPECT_EQ(preferences.get(preference::hotkey), "rightCommand");
    EXPECT_EQ(preferences.get(preference::speakLangs), QStringList());
    EXPECT_EQ(preferences.stored(preference::manualSummaries), std::nullopt);
}

TEST_F(TypedPreferences, ANumberBeyondAnIntegerCountsAsAbsent) {
    store.setValue("tirra.mac.recordLimit", 3e9);
    EXPECT_EQ(preferences.stored(preference::recordLimit), std::nullopt);
    store.setValue("tirra.mac.recordLimit", 2147483647);
    EXPECT_EQ(preferences.stored(preference::recordLimit), 2147483647);
}

TEST_F(TypedPreferences, AChangeOfOneKeyIsToldToItsObserversAlone) {
    int told = 0;
    const Handle subscription = preferences.subscribe(preference::hotkey, [&] { ++told; });
    preferences.set(preference::recordLimit, 5);
    EXPECT_EQ(told, 0);
    preferences.set(preference::hotkey, QString("fn"));
    preferences.set(preference::hotkey, QString("fn"));
    EXPECT_EQ(told, 1);
}

struct Expected {
    const char* key;
    const char* type;
    QJsonValue fallback;
};

const std::vector<Expected>& expectedCatalogue() {
    static const QJsonArray none;
    static const std::vector<Expected> table{
        {"tirra.mac.appearance", "string", "system"},
        {"tirra.mac.appsThatCannotKeepUp", "array of strings", none},
        {"tirra.mac.autoDetect", "Boolean", false},
        {"tirra.mac.dumpTakes", "Boolean", false},
        {"tirra.mac.device", "string", ""},
        {"tirra.mac.goalStreak", "integer", 0},
        {"tirra.mac.historyDevice", "string", "mac"},
        {"tirra.mac.hotkey", "string", "rightCommand"},
        {"tirra.mac.icloudSync", "Boolean", true},
        {"tirra.mac.includePhoneInStats", "Boolean", true},
        {"tirra.mac.inputUID", "string", ""},
        {"tirra.mac.manualSummaries", "data", ""},
        {"tirra.mac.noteTranslateTo", "string", "en"},
        {"tirra.mac.nudgeLast", "real", 0.0},
        {"tirra.mac.nudgeLearned", "Boolean", false},
        {"tirra.mac.nudgeSuppress", "real", 0.0},
        {"tirra.mac.nudges", "Boolean", true},
        {"tirra.mac.onboarded", "Boolean", false},
        {"tirra.mac.openWindowAtLaunch", "Boolean", false},
        {"tirra.mac.phoneNudgeDismissed", "Boolean", false},
        {"tirra.mac.recordLimit", "integer", 0},
        {"tirra.mac.refcode", "string", ""},
        {"tirra.mac.role", "string", ""},
        {"tirra.mac.soundOn", "Boolean", true},
        {"tirra.mac.source", "string", ""},
        {"tirra.mac.speakLang", "string", ""},
        {"tirra.mac.speakLangs", "array of strings", none},
        {"tirra.mac.style", "string", ""},
        {"tirra.mac.toggleHotkey", "string", "rightOption"},
        {"tirra.mac.token", "string", ""},
        {"tirra.mac.translateLang", "string", ""},
        {"tirra.mac.typingContexts", "array of strings", none},
        {"tirra.mac.uiLang", "string", ""},
        {"AppleLanguages", "array of strings", none},
        {"tirra.linux.extraKey", "string", "Menu"},
        {"tirra.linux.backendURL", "string", ""},
        {"tirra.linux.readKeyDevices", "Boolean", false},
        {"tirra.linux.remoteDesktopToken", "string", ""},
        {"tirra.linux.trayMissingTold", "Boolean", false},
        {"tirra.linux.usersInputMethod", "string", ""},
    };
    return table;
}

TEST(PreferenceCatalogue, HoldsEveryKeyWithItsTypeAndDefault) {
    const auto rows = preference::catalogue();
    std::set<QString> seen;
    for (const auto& [key, type, fallback] : expectedCatalogue()) {
        const auto row = std::find_if(rows.begin(), rows.end(), [wanted = QString(key)](const auto& each) {
            return each.key == wanted;
        });
        ASSERT_NE(row, rows.end()) << key;
        EXPECT_EQ(row->type, type) << key;
        // A null text reads as an empty one.
        EXPECT_EQ(fallback == QJsonValue("") ? QJsonValue(row->fallback.toString("other")) : row->fallback,
                  fallback)
            << key;
        EXPECT_FALSE(row->writtenBy.isEmpty()) << key;
        seen.insert(key);
    }
    for (const auto& row : rows) {
        EXPECT_EQ(seen.count(row.key), 1U) << row.key.toStdString() << " is not expected";
    }
    EXPECT_EQ(rows.size(), expectedCatalogue().size());
}

} // namespace
