// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/TypingPlan.h"

#include <algorithm>

namespace lorvane {

namespace {

/// Collects what one round needs of the spare keys.
class RoundPlanner {
 public:
    RoundPlanner(const CharacterKeys& layout, const SpareKeys& spare, const SpareKeys::Keys& down)
        : layout_(layout), spare_(spare), taken_(down) {}

    /// False when the character has to wait for the next round.
    bool add(char32_t character) {
        const auto stroke = layout_.find(character);
        if (!stroke && !reserve(symbolOfCharacter(character))) {
            return false;
        }
        round_.strokes.push_back(stroke.value_or(KeyStroke()));
        characters_.push_back(character);
        return true;
    }
    TypingRound finish() {
        const auto keys = spare_.choose(missing_.size(), taken_);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            round_.changes.push_back({keys[i], missing_[i]});
        }
        SpareKeys changed = spare_;
        changed.apply(round_.changes);
        for (std::size_t i = 0; i < characters_.size(); ++i) {
            if (KeyStroke& stroke = round_.strokes[i]; stroke.key == 0) {
                stroke.key = changed.carrying(symbolOfCharacter(characters_[i])).value_or(0);
            }
        }
        return std::move(round_);
    }

 private:
    bool reserve(xkb_keysym_t symbol) {
        if (std::find(missing_.begin(), missing_.end(), symbol) != missing_.end()) {
            return true;
        }
        const auto carrying = spare_.carrying(symbol);
        if (carrying && (taken_[*carrying])) {
            return true;
        }
        if (spare_.countOutside(taken_) <= missing_.size()) {
            return false;
        }
        if (carrying) {
            taken_.set(*carrying);
        } else {
            missing_.push_back(symbol);
        }
        return true;
    }

    const CharacterKeys& layout_;
    const SpareKeys& spare_;
    SpareKeys::Keys taken_;
    std::vector<xkb_keysym_t> missing_;
    std::u32string characters_;
    TypingRound round_;
};

} // namespace

std::optional<std::u32string> typeable(const QString& text) {
    if (!text.isValidUtf16()) {
        return std::nullopt;
    }
    const std::u32string characters = text.toStdU32String();
    const bool allText = std::all_of(characters.begin(), characters.end(), [](char32_t character) {
        return symbolOfCharacter(character) != XKB_KEY_NoSymbol;
    });
    return allText ? std::optional(characters) : std::nullopt;
}

bool canType(std::u32string_view text, const CharacterKeys& layout, const SpareKeys& spare,
             const SpareKeys::Keys& down) {
    return spare.countOutside(down) > 0 ||
           std::all_of(text.begin(), text.end(),
                       [&layout](char32_t character) { return layout.find(character).has_value(); });
}

TypingRound planRound(std::u32string_view text, const CharacterKeys& layout, const SpareKeys& spare,
                      const SpareKeys::Keys& down) {
    RoundPlanner planner(layout, spare, down);
    for (const char32_t character : text) {
        if (!planner.add(character)) {
            break;
        }
    }
    return planner.finish();
}

} // namespace lorvane
