// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/FakePasteboard.h"

#include "base/testing/VirtualClock.h"
#include "core/testing/PasteboardContract.h"

namespace lorvane {

namespace {

class FakeDesktop {
 public:
    static constexpr bool tellsWhoAsks = true;

    FakePasteboard& pasteboard() { return pasteboard_; }
    PasteboardSnapshot snapshot() {
        std::optional<PasteboardSnapshot> result;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            result = co_await pasteboard_.snapshot(std::move(scope));
        });
        clock.advance(longestRead);
        return result.value();
    }
    std::optional<QString> string() {
        std::optional<std::optional<QString>> result;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            result = co_await pasteboard_.string(std::move(scope));
        });
        clock.advance(longestRead);
        return result.value();
    }
    void copyElsewhere(const QString& text) { pasteboard_.copyElsewhere(text); }
    void hangOwner() { pasteboard_.ownerHangs = true; }
    [[nodiscard]] ProcessId target() const { return 3; }
    std::optional<QString> pasteIntoTarget() { return pasteboard_.pasteInto(target()); }
    std::optional<QString> pasteIntoAnother() { return pasteboard_.pasteInto(4); }

    VirtualClock clock;

 private:
    static constexpr Duration longestRead = std::chrono::milliseconds(500);
    FakePasteboard pasteboard_{clock};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PasteboardContract, FakeDesktop);

} // namespace

} // namespace lorvane
