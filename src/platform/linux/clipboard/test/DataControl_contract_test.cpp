// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/PasteboardContract.h"

#include "WaylandClipboardPeers.h"

namespace lorvane {
namespace {

/// A compositor's clipboard. It does not tell who asks: the process that is pasted into is the one that asks
/// once the keys are out.
class CompositorDesktop {
 public:
    static constexpr bool tellsWhoAsks = false;

    DataControlPasteboard& pasteboard() { return *world_.pasteboard; }
    PasteboardSnapshot snapshot() { return world_.snapshot(); }
    std::optional<QString> string() { return world_.string(); }
    void copyElsewhere(const QString& text) {
        const auto before = std::move(owner_);
        owner_ = std::make_unique<ForeignWaylandOwner>(Types{{"text/plain", text.toUtf8()}});
        world_.settle(); // the compositor tells of a change before it answers what was asked later
    }
    void hangOwner() { owner_->hang(); }
    [[nodiscard]] ProcessId target() const { return QCoreApplication::applicationPid(); }
    std::optional<QString> pasteIntoTarget() {
        pasteboard().keysGoOut();
        return pasteIntoAnother();
    }
    std::optional<QString> pasteIntoAnother() {
        world_.settle(); // the compositor has what was set
        const auto bytes = pastedByAnother("text/plain");
        return bytes && !bytes->isEmpty() ? std::optional(QString::fromUtf8(*bytes)) : std::nullopt;
    }

 private:
    WaylandClipboard world_;
    std::unique_ptr<ForeignWaylandOwner> owner_;

 public:
    QtClock& clock = world_.clock;
};

INSTANTIATE_TYPED_TEST_SUITE_P(DataControl, PasteboardContract, CompositorDesktop);

} // namespace
} // namespace lorvane
