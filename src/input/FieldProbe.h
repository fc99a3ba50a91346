// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/FieldAccess.h"

#include <optional>

namespace lorvane {

/// One read of a field. Positions count UTF-16 units; a selection counts as a caret at its start.
struct FieldProbe {
    qint64 length = 0;
    qint64 caret = 0;
    /// Nothing but whitespace and newlines stands after the caret.
    bool blankAfter = false;
    /// A line feed is text there. False when that is not known.
    bool multiLine = false;

    friend bool operator==(const FieldProbe&, const FieldProbe&) = default;
};

/// Nothing when there is no reading or its caret lies outside the value.
[[nodiscard]] std::optional<FieldProbe> probeField(const std::optional<FieldReading>& reading);

} // namespace lorvane
