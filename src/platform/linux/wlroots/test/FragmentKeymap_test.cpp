// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/FragmentKeymap.h"

#include "platform/linux/wlroots/CommandKeys.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include <xkbcommon/xkbcommon.h>

namespace lorvane {

namespace {

template <auto end>
struct End {
    template <typename Object>
    void operator()(Object* object) const {
        end(object);
    }
};

/// A program that has got a keymap.
class Reader {
 public:
    explicit Reader(const QByteArray& keymap)
        : keymap_(xkb_keymap_new_from_string(context_.get(), keymap.constData(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                             XKB_KEYMAP_COMPILE_NO_FLAGS)),
          state_(keymap_ ? xkb_state_new(keymap_.get()) : nullptr) {}

    [[nodiscard]] bool understands() const { return state_ != nullptr; }
    [[nodiscard]] QByteArray layoutName() const { return xkb_keymap_layout_get_name(keymap_.get(), 0); }
    [[nodiscard]] QString textOf(std::uint32_t key) const {
        char text[16] = {};
        xkb_state_key_get_utf8(state_.get(), key + 8, text, sizeof(text));
        return QString::fromUtf8(text);
    }
    [[nodiscard]] xkb_keysym_t symbolOf(std::uint32_t key, std::uint32_t modifiers) {
        xkb_state_update_mask(state_.get(), modifiers, 0, 0, 0, 0, 0);
        return xkb_state_key_get_one_sym(state_.get(), key + 8);
    }

 private:
    std::unique_ptr<xkb_context, End<xkb_context_unref>> context_{
        xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)};
    std::unique_ptr<xkb_keymap, End<xkb_keymap_unref>> keymap_;
    std::unique_ptr<xkb_state, End<xkb_state_unref>> state_;
};

TEST(FragmentKeymap, GivesTheTextToAProgramWithoutFiles) {
    for (const QString& text :
         {QString("Hello, World"), QString("a\u00e9\u0416\u6f22\u2013\u20ac\u00a9\u201c\u00ef"),
          QString("~`\\|{}[]<>/?"), QString(" \u00a0  e\u0301")}) {
        const auto fragment = FragmentKeymap::of(text);
        ASSERT_TRUE(fragment) << text.toStdString();
        const Reader reader(fragment->keymap);
        ASSERT_TRUE(reader.understands()) << fragment->keymap.toStdString();
        EXPECT_FALSE(reader.layoutName().isEmpty());
        QString typed;
        for (const std::uint32_t key : fragment->keys) {
            typed += reader.textOf(key);
        }
        EXPECT_EQ(typed, text);
    }
}

TEST(FragmentKeymap, OnlyKeysOfLettersDigitsAndPunctuationAreUsed) {
    QString text;
    for (char16_t c = u'0'; c < u'0' + 47; ++c) {
        text += QChar(c);
    }
    const auto fragment = FragmentKeymap::of(text);
    ASSERT_TRUE(fragment);
    const std::set<std::uint32_t> keys(fragment->keys.begin(), fragment->keys.end());
    EXPECT_EQ(keys.size(), 47U);
    for (const std::uint32_t no : {1U, 14U, 15U, 28U, 29U, 42U, 54U, 56U, 57U}) {
        EXPECT_FALSE(keys.contains(no)) << no;
    }
    EXPECT_FALSE(FragmentKeymap::of(text + "~"));
}

TEST(FragmentKeymap, WhatIsNotTypedByKeysIsRefused) {
    for (const QString& text : {QString(), QString("a\n"), QString("\t"), QString(QChar(0x7f)),
                                QString("ok \U0001F600"), QString(QChar(0xD83D))}) {
        EXPECT_FALSE(FragmentKeymap::of(text));
    }
}

TEST(CommandKeys, KeymapHasTheKeysThatEditAndPaste) {
    Reader reader(commandKeys::keymap());
    ASSERT_TRUE(reader.understands());
    EXPECT_FALSE(reader.layoutName().isEmpty());
    EXPECT_EQ(reader.symbolOf(commandKeys::backSpace, 0), xkb_keysym_t(XKB_KEY_BackSpace));
    EXPECT_EQ(reader.symbolOf(commandKeys::right, 0), xkb_keysym_t(XKB_KEY_Right));
    EXPECT_EQ(reader.symbolOf(commandKeys::insert, commandKeys::shift), xkb_keysym_t(XKB_KEY_Insert));
    EXPECT_EQ(reader.symbolOf(commandKeys::letterV, commandKeys::control), xkb_keysym_t(XKB_KEY_v));
    EXPECT_EQ(reader.symbolOf(commandKeys::letterV, commandKeys::control | commandKeys::shift),
              xkb_keysym_t(XKB_KEY_V));
}

} // namespace

} // namespace lorvane
