// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "core/FragmentPoster.h"
#include "input/testing/FakeFieldAccess.h"

#include <QString>

#include <functional>
#include <vector>

namespace lorvane {

/// A text field as an application has it, with the habits that a test gives it. Everything that is sent to it
/// takes effect in the order of sending, `lag` later; what comes while its text is absent is lost.
class FakeEditor {
 public:
    /// Makes the field and gives it the focus of its process.
    FakeEditor(Clock& clock, FakeFieldAccess& fields, ProcessId process, const QString& identity);

    void setText(const QString& text, qint64 caret);
    [[nodiscard]] const QString& text() const { return *field().text; }
    [[nodiscard]] qint64 caret() const { return field().caret; }

    /// What an insertion, a right arrow and a backspace do.
    void insertAt(std::optional<qint64> at, const QString& text);
    void rightArrow();
    void backspace();
    /// Goes in at the caret as it is.
    void paste(const QString& text);

    /// From the moment of sending to the effect.
    Duration lag = Duration::zero();
    /// What the application makes of a text that is inserted; as it is when not set.
    std::function<QString(const QString&)> corrects;
    /// How far the caret stays behind an insertion; the keys move it on.
    qint64 caretLag = 0;
    bool ignoresBackspace = false;
    bool ignoresRightArrow = false;
    int rightArrows = 0;
    int backspaces = 0;

 private:
    [[nodiscard]] FakeFieldAccess::Field& field() const { return fields_.field(identity_); }
    void put(std::optional<qint64> at, const QString& text, qint64 behind);
    void send(const std::function<void()>& effect);

    Clock& clock_;
    FakeFieldAccess& fields_;
    QString identity_;
    Instant lastEffect_;
    std::vector<Handle> sent_;
};

/// A way of posting into a FakeEditor, as willing as a test says.
class FakeFragmentPoster final : public FragmentPoster {
 public:
    FakeFragmentPoster(QString name, FakeEditor& editor) : name_(std::move(name)), editor_(editor) {}

    [[nodiscard]] QString name() const override { return name_; }
    [[nodiscard]] bool takesLineBreaks() const override { return lineBreaks; }
    [[nodiscard]] bool tellsWhenDone() const override { return answers; }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override { ++finished; }

    bool offered = true;
    bool answers = true;
    bool lineBreaks = true;
    PostOutcome outcome = PostOutcome::posted;
    /// Says its outcome and does nothing.
    bool hasNoEffect = false;
    /// Before the next post.
    std::function<void()> beforePost;
    std::vector<QString> posts;
    /// Posts and refusals.
    int asked = 0;
    int finished = 0;

 private:
    QString name_;
    FakeEditor& editor_;
};

/// Keys that work on a FakeEditor.
class FakeEditingKeys final : public EditingKeys {
 public:
    explicit FakeEditingKeys(FakeEditor& editor) : editor_(editor) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return held; }
    [[nodiscard]] bool canPost() override { return possible; }
    void press(EditingKey key) override;
    [[nodiscard]] bool isPending() override { return pending && pending(); }

    /// Never when not set.
    std::function<bool()> pending;
    std::uint32_t held = 0;
    bool possible = true;
    /// Before each key.
    std::function<void()> beforePress;

 private:
    FakeEditor& editor_;
};

} // namespace lorvane
