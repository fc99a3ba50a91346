// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/FieldProbe.h"

namespace lorvane {

std::optional<FieldProbe> probeField(const std::optional<FieldReading>& reading) {
    if (!reading || reading->caret < 0 || reading->caret > reading->length) {
        return std::nullopt;
    }
    return FieldProbe{reading->length, reading->caret, reading->afterCaret.trimmed().isEmpty(),
                      reading->multiLine};
}

} // namespace lorvane
