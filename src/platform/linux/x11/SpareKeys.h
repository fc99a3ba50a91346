// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyTable.h"

#include <bitset>
#include <optional>
#include <vector>

#include <xkbcommon/xkbcommon.h>

namespace lorvane {

/// A symbol that is put on a key, on all its levels; NoSymbol takes it away.
struct KeyChange {
    XKeyCode key = 0;
    xkb_keysym_t symbol = XKB_KEY_NoSymbol;

    friend auto operator<=>(const KeyChange&, const KeyChange&) = default;
};

/// Symbols for neighbouring keys, changed by one request.
struct KeyRange {
    XKeyCode first = 0;
    std::vector<xkb_keysym_t> symbols;

    friend bool operator==(const KeyRange&, const KeyRange&) = default;
};

/// The keys that the layout leaves without a symbol, and what is borrowed of them.
class SpareKeys {
 public:
    using Keys = std::bitset<256>;

    SpareKeys() = default;
    /// Keys that carry a symbol are already borrowed.
    explicit SpareKeys(std::vector<KeyChange> keys);

    [[nodiscard]] bool isEmpty() const { return keys_.empty(); }
    [[nodiscard]] bool contains(XKeyCode key) const;
    [[nodiscard]] Keys all() const;
    [[nodiscard]] std::vector<KeyChange> borrowed() const;
    [[nodiscard]] std::optional<XKeyCode> carrying(xkb_keysym_t symbol) const;
    /// How many are outside of `taken`.
    [[nodiscard]] std::size_t countOutside(const Keys& taken) const;
    /// Keys outside of `taken` for that many symbols, the least recently used first; neighbours where that
    /// many stand together, since each request makes every program read its map again.
    [[nodiscard]] std::vector<XKeyCode> choose(std::size_t count, const Keys& taken) const;

    /// The requests for some changes: keys in between that are spare too are written again as they are.
    [[nodiscard]] std::vector<KeyRange> ranges(std::vector<KeyChange> changes) const;
    void apply(const std::vector<KeyChange>& changes);
    /// It was typed with.
    void use(XKeyCode key);

 private:
    struct Spare {
        XKeyCode key;
        xkb_keysym_t symbol;
        std::uint64_t lastUse = 0;
    };
    using Run = std::vector<const Spare*>;
    [[nodiscard]] Spare* find(XKeyCode key);
    /// What the keys from the end of a range up to `end` carry; nothing when one of them is no spare key.
    [[nodiscard]] std::optional<std::vector<xkb_keysym_t>> symbolsBetween(const KeyRange& range,
                                                                          XKeyCode end) const;
    /// What is outside of `taken`, in runs of neighbouring spare keys.
    [[nodiscard]] std::vector<Run> runs(const Keys& taken) const;

    std::vector<Spare> keys_; // ascending
    std::uint64_t uses_ = 0;
};

} // namespace lorvane
