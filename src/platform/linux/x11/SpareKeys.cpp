// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/SpareKeys.h"

#include <algorithm>

namespace lorvane {

SpareKeys::SpareKeys(std::vector<KeyChange> keys) {
    std::sort(keys.begin(), keys.end());
    for (const KeyChange& key : keys) {
        keys_.push_back({key.key, key.symbol, 0});
    }
}

bool SpareKeys::contains(XKeyCode key) const { return all()[key]; }

SpareKeys::Keys SpareKeys::all() const {
    Keys keys;
    for (const Spare& spare : keys_) {
        keys.set(spare.key);
    }
    return keys;
}

std::vector<KeyChange> SpareKeys::borrowed() const {
    std::vector<KeyChange> borrowed;
    for (const Spare& spare : keys_) {
        if (spare.symbol != XKB_KEY_NoSymbol) {
            borrowed.push_back({spare.key, spare.symbol});
        }
    }
    return borrowed;
}

std::optional<XKeyCode> SpareKeys::carrying(xkb_keysym_t symbol) const {
    const auto found = std::find_if(keys_.begin(), keys_.end(),
                                    [symbol](const Spare& spare) { return spare.symbol == symbol; });
    return found == keys_.end() ? std::nullopt : std::optional(found->key);
}

std::size_t SpareKeys::countOutside(const Keys& taken) const { return (all() & ~taken).count(); }

std::vector<SpareKeys::Run> SpareKeys::runs(const Keys& taken) const {
    std::vector<Run> runs;
    int last = -1;
    for (const Spare& spare : keys_) {
        if (runs.empty() || spare.key != last + 1) {
            runs.emplace_back();
        }
        last = spare.key;
        if (!taken[spare.key]) {
            runs.back().push_back(&spare);
        }
    }
    return runs;
}

std::vector<XKeyCode> SpareKeys::choose(std::size_t count, const Keys& taken) const {
    const auto isOlder = [](const Spare* a, const Spare* b) { return a->lastUse < b->lastUse; };
    Run best;
    Run whole;
    for (Run& run : runs(taken)) {
        whole.insert(whole.end(), run.begin(), run.end());
        std::stable_sort(run.begin(), run.end(), isOlder);
        if (run.size() >= count) {
            run.resize(count);
            if (best.empty() || (count > 0 && isOlder(run.back(), best.back()))) {
                best = run;
            }
        }
    }
    if (best.empty()) {
        std::stable_sort(whole.begin(), whole.end(), isOlder);
        whole.resize(std::min(count, whole.size()));
        best = whole;
    }
    std::vector<XKeyCode> keys;
    for (const Spare* const spare : best) {
        keys.push_back(spare->key);
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

std::vector<KeyRange> SpareKeys::ranges(std::vector<KeyChange> changes) const {
    std::sort(changes.begin(), changes.end());
    std::vector<KeyRange> ranges;
    for (const KeyChange& change : changes) {
        const auto between = ranges.empty() ? std::nullopt : symbolsBetween(ranges.back(), change.key);
        if (between) {
            auto& symbols = ranges.back().symbols;
            symbols.insert(symbols.end(), between->begin(), between->end());
        } else {
            ranges.push_back({change.key, {}});
        }
        ranges.back().symbols.push_back(change.symbol);
    }
    return ranges;
}

std::optional<std::vector<xkb_keysym_t>> SpareKeys::symbolsBetween(const KeyRange& range,
                                                                   XKeyCode end) const {
    std::vector<xkb_keysym_t> symbols;
    for (std::size_t key = range.first + range.symbols.size(); key < end; ++key) {
        const auto spare = std::find_if(keys_.begin(), keys_.end(),
                                        [key](const Spare& candidate) { return candidate.key == key; });
        if (spare == keys_.end()) {
            return std::nullopt;
        }
        symbols.push_back(spare->symbol);
    }
    return symbols;
}

SpareKeys::Spare* SpareKeys::find(XKeyCode key) {
    const auto found =
        std::find_if(keys_.begin(), keys_.end(), [key](const Spare& spare) { return spare.key == key; });
    return found == keys_.end() ? nullptr : &*found;
}

void SpareKeys::apply(const std::vector<KeyChange>& changes) {
    for (const KeyChange& change : changes) {
        if (Spare* const spare = find(change.key)) {
            spare->symbol = change.symbol;
        }
    }
}

void SpareKeys::use(XKeyCode key) {
    if (Spare* const spare = find(key)) {
        spare->lastUse = ++uses_;
    }
}

} // namespace lorvane
