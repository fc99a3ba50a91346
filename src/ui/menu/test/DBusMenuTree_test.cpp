// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/DBusMenuTree.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Kind = MenuEntry::Kind;
using Target = DBusMenuTree::Target;

const MenuEntry line{Kind::text, {}, "a line", false, {}};
const MenuEntry action{Kind::action, "act", "Act_now", false, {}};
const MenuEntry toggle{Kind::toggle, "flip", "Flip", true, {}};
const MenuEntry picker{Kind::picker, "pick", "Pick", false, {{"", "None", true}, {"a", "An A", false}}};

struct DBusMenuTreeTest : public testing::Test {
    DBusMenuLayout child(qsizetype index) const { return tree.layout(0, -1)->children.at(index); }
    DBusMenuTree tree;
};

TEST_F(DBusMenuTreeTest, EachKindIsDescribedAsTheInterfaceHasIt) {
    tree.setEntries({line, MenuEntry{}, action, toggle, picker});
    EXPECT_EQ(child(0).properties, (QVariantMap{{"label", "a line"}, {"enabled", false}}));
    EXPECT_EQ(child(1).properties, (QVariantMap{{"type", "separator"}}));
    EXPECT_EQ(child(2).properties, (QVariantMap{{"label", "Act__now"}}));
    EXPECT_EQ(child(3).properties,
              (QVariantMap{{"label", "Flip"}, {"toggle-type", "checkmark"}, {"toggle-state", 1}}));
    EXPECT_EQ(child(4).properties, (QVariantMap{{"label", "Pick"}, {"children-display", "submenu"}}));
    EXPECT_EQ(child(4).children.at(0).properties,
              (QVariantMap{{"label", "None"}, {"toggle-type", "radio"}, {"toggle-state", 1}}));
    EXPECT_EQ(child(4).children.at(1).properties.value("toggle-state"), 0);
}

TEST_F(DBusMenuTreeTest, AClickMeansItsEntryAndWhatWasPicked) {
    tree.setEntries({line, action, toggle, picker});
    EXPECT_EQ(tree.target(child(0).id), std::nullopt);
    EXPECT_EQ(tree.target(child(1).id), (Target{"act", ""}));
    EXPECT_EQ(tree.target(child(2).id), (Target{"flip", ""}));
    EXPECT_EQ(tree.target(child(3).id), std::nullopt);
    EXPECT_EQ(tree.target(child(3).children.at(1).id), (Target{"pick", "a"}));
    EXPECT_EQ(tree.target(999), std::nullopt);
}

TEST_F(DBusMenuTreeTest, NumbersStayWithWhatTheyNameAndAreNotGivenTwice) {
    tree.setEntries({action, picker});
    const int act = child(0).id;
    const int choice = child(1).children.at(1).id;
    tree.setEntries({toggle, action, MenuEntry{}, picker});
    EXPECT_EQ(child(1).id, act);
    EXPECT_EQ(child(3).children.at(1).id, choice);
    const QList<int> ids = tree.ids();
    EXPECT_EQ(QSet<int>(ids.begin(), ids.end()).size(), ids.size());
    tree.setEntries({toggle});
    EXPECT_EQ(tree.target(act), std::nullopt);
    EXPECT_EQ(tree.properties(act), std::nullopt);
}

TEST_F(DBusMenuTreeTest, ALayoutGoesDownAsFarAsIsAskedFor) {
    tree.setEntries({picker});
    EXPECT_TRUE(tree.layout(0, 0)->children.isEmpty());
    EXPECT_EQ(tree.layout(0, 1)->children.size(), 1);
    EXPECT_TRUE(tree.layout(0, 1)->children.at(0).children.isEmpty());
    EXPECT_EQ(tree.layout(0, 2)->children.at(0).children.size(), 2);
    EXPECT_EQ(tree.layout(child(0).id, 1)->children.size(), 2);
    EXPECT_FALSE(tree.layout(999, -1));
}

} // namespace

} // namespace lorvane
