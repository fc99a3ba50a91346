// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/DoctorRoads.h"
#include "base/Localisation.h"

#include <QString>

#include <vector>

namespace lorvane {

/// One finding. `failed` means that dictation does not work because of it; `warning` that something is
/// missing with which it would work better.
struct DoctorLine {
    enum class Status { ok, warning, failed };
    /// Stable name for programs that read the report.
    QString id;
    Status status = Status::ok;
    QString what;
    /// How to mend it; empty where there is nothing to mend.
    QString remedy;

    friend bool operator==(const DoctorLine&, const DoctorLine&) = default;
};

struct DoctorReport {
    std::vector<DoctorLine> lines;
    /// One for each need; they never decide whether dictation works.
    std::vector<DoctorRoad> roads;
    /// One for each open window; they never decide whether dictation works.
    std::vector<DoctorLine> windows;

    [[nodiscard]] bool dictationWorks() const;
};

[[nodiscard]] QString asText(const DoctorReport& report, const Localisation& words);
/// One object: "dictationWorks"; "checks" and "windows", each of these with "id", "status" ("ok", "warn",
/// "fail"), "what" and "remedy"; and "roads", each with "need", "road", "better" and "step".
[[nodiscard]] QByteArray asJson(const DoctorReport& report);

} // namespace lorvane
