// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/FragmentPoster.h"
#include "platform/linux/atspi/AtspiFieldAccess.h"

namespace lorvane {

/// Hands a fragment to the application that owns the field (EditableText.InsertText): no keys, so that no
/// layout, no held modifier and no keyboard grab makes a difference. Main thread; nothing blocks it.
///
/// "Posted" is what the application says; Firefox says so and inserts nothing. An application that did not
/// answer is put aside as by a reading, and may insert the text when it wakes.
class AtspiInsertion final : public FragmentPoster {
 public:
    /// `fields`: whose readings tell where a caret is in the application's own unit.
    AtspiInsertion(AtspiBus& bus, AtspiFieldAccess& fields, Clock& clock);

    [[nodiscard]] QString name() const override { return QStringLiteral("insertion"); }
    [[nodiscard]] bool tellsWhenDone() const override { return true; }
    [[nodiscard]] bool takesLineBreaks() const override { return true; }
    /// A text that can be edited through the interface, no password and no terminal.
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override {}

 private:
    QCoro::Task<PostOutcome> insert(PostingTarget target, FieldReader::Place place, QString text,
                                    TaskScope scope);
    [[nodiscard]] bool isAside(const AccessibleRef& field);

    AtspiBus& bus_;
    AtspiFieldAccess& fields_;
    Clock& clock_;
};

} // namespace lorvane
