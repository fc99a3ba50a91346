// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"

#include <functional>
#include <utility>
#include <vector>

namespace lorvane {

/// Whether the application that has the keyboard now is one of the X server beside the compositor. Keys for
/// it go by that server, where they are exact; the compositor's own ways do not reach it, or spoil the text.
using IsXInFront = std::function<bool()>;

/// The best way that is open at the moment of each use.
class SessionEditingKeys final : public EditingKeys {
 public:
    SessionEditingKeys(IsXInFront isXInFront, EditingKeys& ofX, std::vector<Road<EditingKeys>> roads)
        : isXInFront_(std::move(isXInFront)), ofX_(ofX), roads_(std::move(roads)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override;
    [[nodiscard]] bool canPost() override;
    void press(EditingKey key) override;
    /// By any way, whichever is the best by now.
    [[nodiscard]] bool isPending() override;

 private:
    /// Null when there is none.
    [[nodiscard]] EditingKeys* current();

    IsXInFront isXInFront_;
    EditingKeys& ofX_;
    std::vector<Road<EditingKeys>> roads_;
};

/// The best way that is open when the keys go out.
class SessionPasteKeys final : public PasteKeys {
 public:
    SessionPasteKeys(IsXInFront isXInFront, Road<PasteKeys> ofX, std::vector<Road<PasteKeys>> roads,
                     DiagnosticLog& log)
        : isXInFront_(std::move(isXInFront)), ofX_(std::move(ofX)), roads_(std::move(roads)), log_(log) {}

    /// Of the way that would be taken now.
    [[nodiscard]] bool readsPrimary(PasteRoute route) override;
    /// Another way is tried only when the keys have surely not gone out by the one before.
    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;
    /// Any way at all.
    [[nodiscard]] bool canPost() const;

    /// Called right before keys go out: whoever asks for the clipboard from then on may be the one that is
    /// pasted into.
    std::function<void()> onKeys;

 private:
    IsXInFront isXInFront_;
    Road<PasteKeys> ofX_;
    std::vector<Road<PasteKeys>> roads_;
    DiagnosticLog& log_;
};

/// A way of typing that is for some targets only.
class GatedPoster final : public FragmentPoster {
 public:
    GatedPoster(FragmentPoster& poster, std::function<bool()> isOpen)
        : poster_(poster), isOpen_(std::move(isOpen)) {}

    [[nodiscard]] QString name() const override { return poster_.name(); }
    [[nodiscard]] bool takesLineBreaks() const override { return poster_.takesLineBreaks(); }
    [[nodiscard]] bool tellsWhenDone() const override { return poster_.tellsWhenDone(); }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override { poster_.finish(); }

 private:
    FragmentPoster& poster_;
    std::function<bool()> isOpen_;
};

} // namespace lorvane
