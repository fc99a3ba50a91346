// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/BorrowedKeys.h"

#include "platform/linux/x11/X11Properties.h"

#include <xcb/xinput.h>

namespace lorvane {

namespace {

constexpr const char* propertyName = "_LORVANE_BORROWED_KEYS";
constexpr XKeyCode firstKey = 8;
constexpr std::uint8_t keyCount = 248;
/// The kernel's code of that key is 0, which means no key to some programs.
constexpr XKeyCode firstSpareKey = 9;

/// A letter and its capital are one thing.
void merge(std::optional<xkb_keysym_t>& carried, xkb_keysym_t symbol) {
    if (symbol == XKB_KEY_NoSymbol || carried == symbol ||
        (carried && symbol == xkb_keysym_to_upper(*carried))) {
        return;
    }
    carried = carried == xkb_keysym_t{XKB_KEY_NoSymbol} ? std::optional(symbol) : std::nullopt;
}

} // namespace

BorrowedKeys::BorrowedKeys(X11Connection& connection) : connection_(connection), keyboards_(connection) {
    if (!connection_.isAlive()) {
        return;
    }
    if (const auto left = noted(); !left.empty()) {
        clear(left);
        note({});
        connection_.flush();
    }
}

BorrowedKeys::Carried BorrowedKeys::carriedByKeys() {
    auto* const xcb = connection_.xcb();
    keyboards_.refresh();
    std::set<XDeviceId> devices = keyboards_.ofUser();
    devices.insert(keyboards_.ofPrograms().begin(), keyboards_.ofPrograms().end());
    std::vector<xcb_input_get_device_key_mapping_cookie_t> cookies;
    for (const XDeviceId device : devices) {
        cookies.push_back(
            xcb_input_get_device_key_mapping(xcb, static_cast<std::uint8_t>(device), firstKey, keyCount));
    }
    const auto modifiersCookie = xcb_get_modifier_mapping(xcb);
    Carried carried;
    carried.fill(XKB_KEY_NoSymbol);
    for (const auto& cookie : cookies) {
        const auto map = connection_.reply(xcb_input_get_device_key_mapping_reply, cookie);
        if (!map || map->keysyms_per_keycode == 0) {
            continue;
        }
        const auto* const symbols = xcb_input_get_device_key_mapping_keysyms(map.get());
        const auto count =
            static_cast<std::size_t>(xcb_input_get_device_key_mapping_keysyms_length(map.get()));
        for (std::size_t i = 0; i < count; ++i) {
            merge(carried.at(firstKey + i / map->keysyms_per_keycode), symbols[i]);
        }
    }
    const auto modifiers = connection_.reply(xcb_get_modifier_mapping_reply, modifiersCookie);
    for (int i = 0; modifiers && i < 8 * modifiers->keycodes_per_modifier; ++i) {
        carried[xcb_get_modifier_mapping_keycodes(modifiers.get())[i]] = std::nullopt;
    }
    return carried;
}

void BorrowedKeys::survey() {
    const Carried carried = carriedByKeys();
    std::vector<KeyChange> spare;
    for (std::size_t code = firstSpareKey; connection_.isAlive() && code < carried.size(); ++code) {
        const auto key = static_cast<XKeyCode>(code);
        const auto symbol = carried[code];
        if (symbol == xkb_keysym_t{XKB_KEY_NoSymbol} || (symbol && keys_.carrying(*symbol) == key)) {
            spare.push_back({key, *symbol});
        }
    }
    keys_ = SpareKeys(std::move(spare));
}

// The old symbols stay noted until the next change: a crash in between finds either.
void BorrowedKeys::change(const std::vector<KeyChange>& changes) {
    std::vector<KeyChange> either = keys_.borrowed();
    const auto ranges = keys_.ranges(changes);
    keys_.apply(changes);
    for (const KeyChange& change : changes) {
        if (change.symbol != XKB_KEY_NoSymbol) {
            either.push_back(change);
        }
    }
    note(either);
    write(ranges);
}

void BorrowedKeys::lendForShortcut(const KeyChange& letter) {
    kept_.set(letter.key);
    change({letter});
    use(letter.key);
}

void BorrowedKeys::letGo(XKeyCode key) {
    kept_.reset(key);
    giveBack(SpareKeys::Keys().set(key));
}

void BorrowedKeys::giveBack() { giveBack(~kept_); }

void BorrowedKeys::giveBack(const SpareKeys::Keys& which) {
    std::vector<KeyChange> over;
    std::vector<KeyChange> left;
    for (const KeyChange& key : keys_.borrowed()) {
        (which[key.key] ? over : left).push_back(key);
    }
    if (!connection_.isAlive() || over.empty()) {
        return;
    }
    clear(over);
    note(left);
    connection_.flush();
}

void BorrowedKeys::clear(const std::vector<KeyChange>& borrowed) {
    const Carried carried = carriedByKeys();
    std::vector<KeyChange> changes;
    std::vector<KeyChange> known;
    for (const KeyChange& key : borrowed) {
        if (carried[key.key] == key.symbol) {
            changes.push_back({key.key, XKB_KEY_NoSymbol});
            known.push_back(key);
        }
    }
    if (keys_.isEmpty()) {
        keys_ = SpareKeys(known);
    }
    write(keys_.ranges(changes));
    keys_.apply(changes);
}

std::vector<KeyChange> BorrowedKeys::noted() {
    const auto numbers = windowNumbers(connection_, connection_.root(), propertyName);
    std::vector<KeyChange> keys;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
        if (numbers[i] >= firstSpareKey && numbers[i] < 256 && numbers[i + 1] != XKB_KEY_NoSymbol) {
            keys.push_back({static_cast<XKeyCode>(numbers[i]), numbers[i + 1]});
        }
    }
    return keys;
}

void BorrowedKeys::note(const std::vector<KeyChange>& borrowed) {
    const xcb_atom_t property = connection_.atom(propertyName);
    if (borrowed.empty()) {
        xcb_delete_property(connection_.xcb(), connection_.root(), property);
        return;
    }
    std::vector<std::uint32_t> numbers;
    for (const KeyChange& key : borrowed) {
        numbers.insert(numbers.end(), {key.key, key.symbol});
    }
    xcb_change_property(connection_.xcb(), XCB_PROP_MODE_REPLACE, connection_.root(), property,
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()), numbers.data());
}

// Twice, since a symbol that stands alone is given the capital letter that belongs to it under Shift: that is
// for shortcuts.
void BorrowedKeys::write(const std::vector<KeyRange>& ranges) {
    for (const KeyRange& range : ranges) {
        std::vector<xcb_keysym_t> symbols;
        for (std::size_t i = 0; i < range.symbols.size(); ++i) {
            const xkb_keysym_t symbol = range.symbols[i];
            const bool isOfShortcut = kept_[range.first + i];
            symbols.insert(symbols.end(), {symbol, isOfShortcut ? xkb_keysym_to_upper(symbol) : symbol});
        }
        xcb_change_keyboard_mapping(connection_.xcb(), static_cast<std::uint8_t>(range.symbols.size()),
                                    range.first, 2, symbols.data());
    }
}

} // namespace lorvane
