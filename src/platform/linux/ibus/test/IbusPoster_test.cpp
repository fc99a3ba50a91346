// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/test/IbusFixture.h"
#include "platform/linux/ibus/test/ScriptedDaemon.h"

#include <QTemporaryDir>

namespace lorvane {

namespace {

const QString users = QStringLiteral("xkb:us::eng");

class IbusPosterTest : public IbusFixture {
 protected:
    std::unique_ptr<IbusPoster> poster() {
        IbusAddressPlaces places;
        places.address = daemon->address;
        auto made = std::make_unique<IbusPoster>(clock, log, memory(), places);
        EXPECT_TRUE(waitClosely([&] { return made->isConnected(); }));
        return made;
    }
    std::unique_ptr<ScriptedDaemon> daemon = std::make_unique<ScriptedDaemon>();
};

TEST_F(IbusPosterTest, CommitsFragmentsByOneEngineAndGivesTheUsersBack) {
    const auto ways = poster();
    EXPECT_EQ(canPost(*ways), true);
    EXPECT_TRUE(daemon->setEngines.isEmpty());
    EXPECT_EQ(post(*ways, QStringLiteral("Grüße ")), PostOutcome::posted);
    EXPECT_EQ(remembered, users);
    EXPECT_EQ(post(*ways, QStringLiteral("漢 😀")), PostOutcome::posted);
    const QStringList expected{QStringLiteral("Grüße "), QStringLiteral("漢 😀")};
    EXPECT_TRUE(waitClosely([&] { return daemon->commits == expected; }));
    EXPECT_EQ(daemon->setEngines, QStringList{IbusEngine::name});
    ways->finish();
    EXPECT_TRUE(waitClosely([&] { return daemon->inForce == users && remembered.isEmpty(); }));
    EXPECT_FALSE(ways->isBorrowing());
}

TEST_F(IbusPosterTest, ANewTextWaitsUntilTheUsersEngineIsBackAndBorrowsAgain) {
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::posted);
    ways->finish();
    EXPECT_EQ(post(*ways, QStringLiteral("b")), PostOutcome::posted);
    EXPECT_TRUE(waitClosely([&] { return daemon->commits == QStringList({"a", "b"}); }));
    EXPECT_EQ(daemon->setEngines, QStringList({IbusEngine::name, users, IbusEngine::name}));
}

TEST_F(IbusPosterTest, AFieldWithoutAnInputContextIsRefusedAndNothingStaysBorrowed) {
    daemon->client = QStringLiteral("fake");
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused);
    EXPECT_TRUE(waitClosely([&] { return daemon->inForce == users && remembered.isEmpty(); }));
    EXPECT_TRUE(daemon->commits.isEmpty());
}

TEST_F(IbusPosterTest, NothingIsCommittedIntoAPasswordOrAPin) {
    for (const uint secret : {8U, 9U}) {
        daemon->purpose = secret;
        const auto ways = poster();
        EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused);
        ways->finish();
        EXPECT_TRUE(waitClosely([&] { return daemon->inForce == users; }));
    }
    EXPECT_TRUE(daemon->commits.isEmpty());
}

TEST_F(IbusPosterTest, WhileTheUserComposesNothingIsOfferedAndNoEngineIsChanged) {
    const auto ways = poster();
    ASSERT_EQ(canPost(*ways), true);
    daemon->compose(QStringLiteral("ni"), true);
    ASSERT_TRUE(waitClosely([&] { return canPost(*ways) == false; }));
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused);
    EXPECT_TRUE(daemon->setEngines.isEmpty());
    EXPECT_EQ(isUserComposing(*ways), true);
    daemon->compose(QString(), false);
    EXPECT_TRUE(waitClosely([&] { return canPost(*ways) == true; }));
    EXPECT_EQ(isUserComposing(*ways), false);
    daemon->silent = {QStringLiteral("CurrentInputContext")};
    EXPECT_EQ(isUserComposing(*ways), false) << "a daemon that hangs keeps nobody from keys";
}

TEST_F(IbusPosterTest, WithoutAnEngineOfTheUsersNothingIsBorrowed) {
    daemon->inForce.clear();
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused);
    EXPECT_TRUE(daemon->setEngines.isEmpty());
}

TEST_F(IbusPosterTest, AnEngineThatTheUserChoseMeanwhileStays) {
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::posted);
    daemon->inForce = QStringLiteral("mozc-jp");
    ways->finish();
    EXPECT_TRUE(waitClosely([&] { return remembered.isEmpty(); }));
    EXPECT_EQ(daemon->inForce, QStringLiteral("mozc-jp"));
    EXPECT_FALSE(daemon->setEngines.contains(users));
}

TEST_F(IbusPosterTest, WhatACrashHasLeftIsGivenBackAtTheNextStart) {
    daemon->inForce = IbusEngine::name;
    remembered = QStringLiteral("libpinyin");
    const auto ways = poster();
    EXPECT_TRUE(waitClosely([&] { return daemon->inForce == QLatin1String("libpinyin"); }));
    EXPECT_TRUE(waitClosely([&] { return remembered.isEmpty(); }));
}

TEST_F(IbusPosterTest, AnEngineThatIsBackIsKnownToBeThoughNothingWasSaidOfIt) {
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::posted);
    daemon->setsUsersInSilence = true;
    ways->finish();
    EXPECT_TRUE(waitClosely([&] { return remembered.isEmpty(); }));
    EXPECT_EQ(daemon->inForce, users);
}

TEST_F(IbusPosterTest, TheEndOfTheProgramGivesTheEngineBack) {
    {
        const auto ways = poster();
        EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::posted);
    }
    EXPECT_EQ(daemon->inForce, users);
    EXPECT_TRUE(remembered.isEmpty());
}

TEST_F(IbusPosterTest, ADaemonThatRefusesIsNotTypedBy) {
    for (const auto& what : {"RegisterComponent", "SetGlobalEngine", "GlobalEngine", "CurrentInputContext"}) {
        daemon->refused = QStringList{what};
        const auto ways = poster();
        EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused) << what;
        daemon->refused.clear();
    }
    EXPECT_EQ(daemon->inForce, users);
}

TEST_F(IbusPosterTest, ADaemonThatHangsIsNotWaitedForForLong) {
    const auto ways = poster();
    daemon->silent = {QStringLiteral("CurrentInputContext")};
    EXPECT_EQ(canPost(*ways), false);
    daemon->silent = {QStringLiteral("SetGlobalEngine")};
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::refused);
}

TEST_F(IbusPosterTest, ADaemonThatGoesInTheMiddleOfATextEndsTheWay) {
    const auto ways = poster();
    EXPECT_EQ(post(*ways, QStringLiteral("a")), PostOutcome::posted);
    daemon->end();
    ASSERT_TRUE(waitClosely([&] { return !ways->isConnected(); }));
    EXPECT_EQ(post(*ways, QStringLiteral("b")), PostOutcome::refused);
    EXPECT_EQ(canPost(*ways), false);
    ways->finish();
    EXPECT_EQ(remembered, users);
}

TEST_F(IbusPosterTest, ADaemonThatComesLaterIsFound) {
    const QTemporaryDir folder;
    IbusAddressPlaces places;
    places.folder = folder.path() + QStringLiteral("/ibus/bus");
    places.files = {places.folder + QStringLiteral("/0123-unix-0")};
    IbusPoster ways(clock, log, memory(), places);
    EXPECT_EQ(canPost(ways), false);
    ASSERT_TRUE(QDir().mkpath(places.folder));
    QFile file(places.files.first());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("IBUS_ADDRESS=" + daemon->address.toUtf8() + "\n");
    file.close();
    EXPECT_TRUE(waitClosely([&] { return ways.isConnected(); }));
}

TEST_F(IbusPosterTest, AnAddressWhereNobodyAnswersIsNoDaemon) {
    IbusAddressPlaces places;
    places.address = QStringLiteral("unix:path=/nonexistent/bus");
    IbusPoster ways(clock, log, memory(), places);
    EXPECT_EQ(canPost(ways), false);
    EXPECT_EQ(post(ways, QStringLiteral("a")), PostOutcome::refused);
}

} // namespace

} // namespace lorvane
