// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillLayout.h"

#include "ui/pill/PillGeometry.h"

#include <gtest/gtest.h>

namespace lorvane::pillLayout {

namespace {

const Notice notice{QStringLiteral("Didn't catch that"), NoticeSeverity::warning};

TEST(PillLayout, ShowsOneContentForEachPhase) {
    EXPECT_EQ(contentOf(Idle{}, false), Content::restingBars);
    EXPECT_EQ(contentOf(Idle{}, true), Content::controls);
    EXPECT_EQ(contentOf(Recording{}, false), Content::wave);
    EXPECT_EQ(contentOf(Processing{}, false), Content::progress);
    EXPECT_EQ(contentOf(Done{}, false), Content::done);
    EXPECT_EQ(contentOf(notice, false), Content::notice);
}

TEST(PillLayout, OpensUnderThePointerWhenNothingIsGoingOnAndOnlyThen) {
    for (const Phase& phase : {Phase{Recording{}}, Phase{Processing{}}, Phase{Done{}}, Phase{notice}}) {
        EXPECT_EQ(contentOf(phase, true), contentOf(phase, false));
    }
}

TEST(PillLayout, EachContentHasItsSize) {
    EXPECT_EQ(sizeOf(Content::restingBars, 0), QSizeF(58, 15));
    EXPECT_EQ(sizeOf(Content::controls, 0), QSizeF(110, 22));
    EXPECT_EQ(sizeOf(Content::wave, 0), QSizeF(136, 22));
    EXPECT_EQ(sizeOf(Content::progress, 0), QSizeF(136, 22));
    EXPECT_EQ(sizeOf(Content::done, 0), QSizeF(96, 22));
    EXPECT_EQ(sizeOf(Content::notice, 266), QSizeF(300, 28));
}

TEST(PillLayout, ANoticeIsMeasuredWithThirtyFourMoreAndRoundedUp) {
    EXPECT_EQ(noticeSize(250), QSizeF(284, 28));
    EXPECT_EQ(noticeSize(250.01), QSizeF(285, 28));
    EXPECT_EQ(noticeSize(249.99), QSizeF(284, 28));
}

TEST(PillLayout, AShortNoticeIsTwoHundredAndTwentyWide) {
    EXPECT_EQ(noticeSize(0), QSizeF(220, 28));
    EXPECT_EQ(noticeSize(186), QSizeF(220, 28));
    EXPECT_EQ(noticeSize(187), QSizeF(221, 28));
}

TEST(PillLayout, ANoticeOfExactlyTheWidestStaysOneLine) {
    EXPECT_EQ(noticeSize(382), QSizeF(416, 28));
    EXPECT_FALSE(isTwoLines(noticeSize(382)));
}

TEST(PillLayout, ANoticeThatIsWiderGetsTwoLines) {
    EXPECT_EQ(noticeSize(382.1), QSizeF(416, 46));
    EXPECT_EQ(noticeSize(383), QSizeF(416, 46));
    EXPECT_EQ(noticeSize(4000), QSizeF(416, 46));
    EXPECT_TRUE(isTwoLines(noticeSize(383)));
}

TEST(PillLayout, TheHitAreaStandsInTheMiddleOfTheWindowsBottom) {
    EXPECT_EQ(hitArea(), QRect(150, 62, 140, 34));
    EXPECT_EQ(hitArea().y() + hitArea().height(), pillGeometry::panelHeight);
}

TEST(PillLayout, TheHitAreaIsAroundEveryCapsuleButThoseOfNotices) {
    for (const Content content :
         {Content::restingBars, Content::controls, Content::wave, Content::progress, Content::done}) {
        EXPECT_TRUE(QRectF(hitArea()).contains(capsule(sizeOf(content, 0))));
    }
    EXPECT_FALSE(QRectF(hitArea()).contains(capsule(noticeSize(0))));
}

TEST(PillLayout, EveryCapsuleStandsWhollyInTheWindowAboveTheEdgeThatItStandsOn) {
    const QRectF above(0, 0, pillGeometry::panelWidth, pillGeometry::panelHeight - pillGeometry::overhang);
    for (const QSizeF& size : {QSizeF(58, 15), QSizeF(136, 22), QSizeF(220, 28), QSizeF(416, 46)}) {
        EXPECT_TRUE(above.contains(capsule(size)));
        EXPECT_DOUBLE_EQ(capsule(size).center().x(), 220);
    }
}

TEST(PillLayout, CapsulesOpenAroundOneMiddleAndNoticesGrowUpwards) {
    EXPECT_DOUBLE_EQ(capsule({58, 15}).center().y(), capsule({136, 22}).center().y());
    EXPECT_DOUBLE_EQ(capsule({136, 22}).bottom(), capsule({220, 28}).bottom());
    EXPECT_DOUBLE_EQ(capsule({416, 46}).bottom(), capsule({220, 28}).bottom());
}

TEST(PillLayout, ATapStartsFromIdleAndDone) {
    EXPECT_EQ(tapIn(Idle{}), Tap::start);
    EXPECT_EQ(tapIn(Done{}), Tap::start);
}

TEST(PillLayout, ATapStopsARecording) { EXPECT_EQ(tapIn(Recording{}), Tap::stop); }

TEST(PillLayout, ATapDoesNothingWhileATakeIsOnItsWayOrANoticeShows) {
    EXPECT_EQ(tapIn(Processing{}), Tap::nothing);
    EXPECT_EQ(tapIn(notice), Tap::nothing);
}

} // namespace

} // namespace lorvane::pillLayout
