// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/PasteboardContract.h"

#include "ClipboardPeers.h"

#include <unistd.h>

namespace lorvane {
namespace {

/// The virtual desktop. The target is this very process, which asks from a connection of its own.
class X11Desktop {
 public:
    static constexpr bool tellsWhoAsks = true;

    X11Desktop() {
        { const ForeignOwner gone({{"text/plain", "left by the test before"}}); }
        if (!pasteboard_ || !peer_) {
            throw std::runtime_error("no X server");
        }
    }
    X11Pasteboard& pasteboard() { return *pasteboard_; }
    PasteboardSnapshot snapshot() {
        return finish<PasteboardSnapshot>(
            [this](TaskScope scope) { return pasteboard_->snapshot(std::move(scope)); });
    }
    std::optional<QString> string() {
        using Text = std::optional<QString>;
        return finish<Text>([this](TaskScope scope) { return pasteboard_->string(std::move(scope)); });
    }
    void copyElsewhere(const QString& text) {
        const auto current = peer_->ownerOf(clipboard());
        const bool wasOurs = current != XCB_WINDOW_NONE && current != copyOf_;
        const auto before = std::move(owner_);
        owner_ = std::make_unique<ForeignOwner>(Types{{"text/plain", text.toUtf8()}});
        copyOf_ = peer_->ownerOf(clipboard());
        if (wasOurs && !waitUntil([this] { return pasteboard_->loanState().lost; })) {
            throw std::runtime_error("the copy was not noticed");
        }
    }
    void hangOwner() { owner_->hang(); }
    [[nodiscard]] ProcessId target() const { return getpid(); }
    std::optional<QString> pasteIntoTarget() {
        using Text = std::optional<QString>;
        return finish<Text>([this](TaskScope scope) { return reader_.readText(longest, std::move(scope)); });
    }
    std::optional<QString> pasteIntoAnother() {
        for (const auto* type : {"UTF8_STRING", "text/plain;charset=utf-8"}) {
            if (const auto bytes = askedByAnother(type)) {
                return QString::fromUtf8(*bytes);
            }
        }
        return std::nullopt;
    }

    QtClock clock;

 private:
    static constexpr qsizetype longest = 1000;

    xcb_atom_t clipboard() { return peer_->atom("CLIPBOARD"); }

    std::unique_ptr<X11Pasteboard> pasteboard_ = X11Pasteboard::open(clock);
    std::unique_ptr<XcbConnection> peer_ = XcbConnection::open();
    ReadingWindows windows_{*peer_};
    SelectionReader reader_{*peer_, windows_, clock, "CLIPBOARD"};
    std::unique_ptr<ForeignOwner> owner_;
    xcb_window_t copyOf_ = XCB_WINDOW_NONE; // the window that owns the clipboard for it
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, PasteboardContract, X11Desktop);

} // namespace
} // namespace lorvane
