// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/AccessibleRef.h"

#include <QStringList>
#include <QVariantList>

#include <optional>
#include <vector>

namespace lorvane {

/// What a call to an application gave: its values, a refusal, or silence.
class AtspiReply {
 public:
    enum class Outcome { answered, refused, timedOut };

    AtspiReply(Outcome outcome, QVariantList values) : outcome_(outcome), values_(std::move(values)) {}

    [[nodiscard]] bool answered() const { return outcome_ == Outcome::answered; }
    [[nodiscard]] bool timedOut() const { return outcome_ == Outcome::timedOut; }

    /// Each is absent when the call was not answered, or with something else than was asked for.
    [[nodiscard]] std::optional<QString> text() const;
    [[nodiscard]] std::optional<qint64> number() const;
    [[nodiscard]] std::optional<AccessibleStates> states() const;
    [[nodiscard]] std::optional<QStringList> names() const;
    [[nodiscard]] std::optional<std::vector<AccessibleRef>> objects() const;

 private:
    [[nodiscard]] QVariant first() const;

    Outcome outcome_;
    QVariantList values_;
};

} // namespace lorvane
