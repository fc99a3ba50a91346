// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/HomeModel.h"
#include "ui/windows/testing/FakeRecentDictations.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

RecentDictation said(const QString& text, int minutes = 0) {
    return {text, WallTime(std::chrono::hours(24) + std::chrono::minutes(minutes))};
}

struct HomeModelTest : public testing::Test {
    QString text(int row) const { return model.data(model.index(row), HomeModel::textRole).toString(); }
    QString when(int row) const { return model.data(model.index(row), HomeModel::whenRole).toString(); }

    Localisation words;
    FakeRecentDictations dictations;
    HomeModel model{words, dictations, "right Ctrl"};
    QSignalSpy inserted{&model, &QAbstractItemModel::rowsInserted};
    QSignalSpy reset{&model, &QAbstractItemModel::modelReset};
};

TEST_F(HomeModelTest, WithoutADictationItSaysHowToMakeOne) {
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.emptyHint(),
              QStringLiteral("Hold right Ctrl in any text field and speak. What you said appears here."));
}

TEST_F(HomeModelTest, ADictationReadsAsItsTextAndItsTime) {
    dictations.set({said("newer", 61), said("older")});
    ASSERT_EQ(model.rowCount(), 2);
    EXPECT_EQ(text(0), QStringLiteral("newer"));
    EXPECT_EQ(text(1), QStringLiteral("older"));
    EXPECT_TRUE(when(0).contains(QStringLiteral("01:01"))) << when(0).toStdString();
    EXPECT_NE(when(0), when(1));
}

TEST_F(HomeModelTest, ANewDictationIsOneRowAtTheFront) {
    dictations.set({said("one")});
    dictations.set({said("two"), said("one")});
    EXPECT_EQ(reset.size(), 0);
    EXPECT_EQ(inserted.size(), 2);
    EXPECT_EQ(text(0), QStringLiteral("two"));
}

TEST_F(HomeModelTest, AnyOtherChangeIsANewListAndNoChangeIsNone) {
    dictations.set({said("one"), said("two")});
    const auto resets = reset.size();
    dictations.set({said("one"), said("two")});
    EXPECT_EQ(reset.size(), resets);
    dictations.set({said("two")});
    EXPECT_EQ(reset.size(), resets + 1);
    EXPECT_EQ(model.rowCount(), 1);
}

TEST_F(HomeModelTest, OnlyTheNewestAreShown) {
    std::vector<RecentDictation> many(HomeModel::most + 5, said("x"));
    many.front().text = "first";
    dictations.set(many);
    EXPECT_EQ(model.rowCount(), static_cast<int>(HomeModel::most));
    EXPECT_EQ(text(0), QStringLiteral("first"));
}

} // namespace

} // namespace lorvane
