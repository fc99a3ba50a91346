// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/AtspiBus.h"
#include "platform/linux/atspi/PatienceList.h"

namespace lorvane {

struct FoundFocus {
    AccessibleRef field;
    /// A field of text; otherwise something inside may gain the focus still without a word.
    bool isEditable = false;
};

/// Looks through the windows of an application for the field that has the keyboard: for the start of the
/// program, when no event has told yet. Level by level, everything of a level asked at once; only the active
/// window and only what shows; at most `mostObjects` objects. Main thread.
class FocusSearch {
 public:
    static constexpr std::size_t mostObjects = 3000;

    FocusSearch(AtspiBus& bus, Clock& clock, PatienceList& patience);

    /// Absent when there is none, or none was found before `deadline`.
    QCoro::Task<std::optional<FoundFocus>> find(ProcessId process, Instant deadline, TaskScope scope);
    /// The same within one application.
    QCoro::Task<std::optional<FoundFocus>> findWithin(AccessibleRef application, Instant deadline,
                                                      TaskScope scope);

 private:
    using Objects = std::vector<AccessibleRef>;
    struct Level {
        Objects showing;
        std::optional<FoundFocus> focused;
    };
    QCoro::Task<Objects> childrenOf(Objects parents, Instant deadline, TaskScope scope);
    QCoro::Task<Level> examine(Objects objects, bool areWindows, Instant deadline, TaskScope scope);
    [[nodiscard]] Duration left(Instant deadline) const;

    AtspiBus& bus_;
    Clock& clock_;
    PatienceList& patience_;
};

} // namespace lorvane
