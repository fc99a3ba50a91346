// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyPoster.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr qsizetype longestFragment = 12;
/// For keys that have been typed with and get another symbol before anyone has read back what they gave.
constexpr Duration betweenRounds = std::chrono::milliseconds(20);

/// Holds a modifier over neighbouring strokes that need it.
class HeldKey {
 public:
    HeldKey(PostingKeyboard& keyboard, XKeyCode key) : keyboard_(keyboard), key_(key) {}
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;
    ~HeldKey() { hold(false); }
    void hold(bool down) {
        if (down != down_) {
            keyboard_.fakeKey(key_, down);
            down_ = down;
        }
    }

 private:
    PostingKeyboard& keyboard_;
    XKeyCode key_;
    bool down_ = false;
};

} // namespace

X11KeyPoster::X11KeyPoster(X11Connection& connection, Clock& clock, TypingLayout& layout,
                           SettleTime settleTime)
    : connection_(connection), clock_(clock), settleTime_(std::move(settleTime)), layout_(layout),
      ping_(connection, clock) {}

QCoro::Task<bool> X11KeyPoster::canPost(PostingTarget /*target*/, TaskScope /*scope*/) {
    co_return layout_.refresh();
}

QCoro::Task<PostOutcome> X11KeyPoster::post(PostingTarget target, QString text, TaskScope scope) {
    const auto characters = text.size() <= longestFragment ? typeable(text) : std::nullopt;
    if (!characters) {
        co_return PostOutcome::refused;
    }
    const Duration settleTime = settleTime_(target.application);
    std::u32string_view rest = *characters;
    const auto failed = [&] {
        return rest.size() == characters->size() ? PostOutcome::refused : PostOutcome::unknown;
    };
    // A round whose keys had to be changed is planned once more when that has settled: the layout in force,
    // Caps Lock and what is held are those of the moment in which the keys go out.
    for (std::size_t changes = 0; !rest.empty();) {
        const auto moment = layout_.refresh() ? layout_.keyboard().moment() : std::nullopt;
        if (!moment || changes > characters->size()) {
            co_return failed();
        }
        const CharacterKeys& layout = layout_.characters(moment->group);
        if (!canType(rest, layout, layout_.borrowed().keys(), moment->down)) {
            co_return failed();
        }
        const TypingRound round = planRound(rest, layout, layout_.borrowed().keys(), moment->down);
        if (round.changes.empty()) {
            type(round.strokes, layout, *moment);
            rest.remove_prefix(round.strokes.size());
            continue;
        }
        ++changes;
        const bool afterTyping = rest.size() < characters->size();
        const QCoro::Task<void> lent = lend(round.changes, afterTyping, settleTime, scope);
        co_await lent;
    }
    co_return connection_.isAlive() ? PostOutcome::posted : PostOutcome::unknown;
}

QCoro::Task<void> X11KeyPoster::lend(std::vector<KeyChange> changes, bool afterTyping, Duration settleTime,
                                     TaskScope scope) {
    if (afterTyping) {
        // The keys of the round before are read by their symbols of now.
        const QCoro::Task<void> read = settle(std::max(settleTime, betweenRounds), scope);
        co_await read;
    }
    layout_.borrowed().change(changes);
    connection_.flush();
    const QCoro::Task<void> known = settle(settleTime, scope);
    co_await known;
}

QCoro::Task<void> X11KeyPoster::settle(Duration time, TaskScope scope) {
    if (time > Duration::zero()) {
        const QCoro::Task<bool> answer = ping_.answer(scope);
        (void)co_await answer;
        co_await sleep(clock_, time, scope);
    }
}

void X11KeyPoster::type(const std::vector<KeyStroke>& strokes, const CharacterKeys& layout,
                        const KeyboardMoment& moment) {
    std::vector<XKeyCode> held = moment.heldModifiers;
    for (const KeyStroke& stroke : strokes) {
        if (moment.down[stroke.key]) {
            held.push_back(stroke.key);
        }
    }
    PostingKeyboard& keyboard = layout_.keyboard();
    keyboard.lift(held);
    if (moment.capsLock) {
        keyboard.lockCaps(false);
    }
    {
        HeldKey shift(keyboard, layout.shiftKey());
        HeldKey thirdLevel(keyboard, layout.thirdLevelKey());
        for (const KeyStroke& stroke : strokes) {
            shift.hold(stroke.shift);
            thirdLevel.hold(stroke.thirdLevel);
            keyboard.fakeKey(stroke.key, true);
            keyboard.fakeKey(stroke.key, false);
            layout_.borrowed().use(stroke.key);
        }
    }
    if (moment.capsLock) {
        keyboard.lockCaps(true);
    }
    connection_.flush();
}

void X11KeyPoster::finish() {
    layout_.borrowed().giveBack();
    ping_.end();
}

} // namespace lorvane
