// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/DoctorProbes.h"
#include "app/doctor/DoctorReport.h"

namespace lorvane {

/// Says what of this desktop works for dictation and how to mend what does not. Works whether or not the
/// program runs.
class Doctor {
 public:
    Doctor(DoctorProbes probes, const Localisation& words);

    QCoro::Task<DoctorReport> examine(TaskScope scope);

 private:
    void session(DoctorReport& report) const;
    void keys(DoctorReport& report) const;
    /// Of a Wayland session, where the roads decide.
    void roadKeys(DoctorReport& report, const RoadFacts& facts) const;
    QCoro::Task<void> roads(DoctorReport* report, TaskScope scope);
    void accessibility(DoctorReport& report, AccessibilityFacts facts) const;
    void microphone(DoctorReport& report, const Result<QString, MicrophoneLack>& found) const;
    void backend(DoctorReport& report, const BackendFacts& facts) const;
    QCoro::Task<void> services(DoctorReport* report, TaskScope scope);
    QCoro::Task<void> windows(DoctorReport* report, TaskScope scope);

    DoctorProbes probes_;
    const Localisation& words_;
};

/// The finding on one open window. `fields` is what its process shows, null when it shows nothing.
[[nodiscard]] DoctorLine windowLine(const OpenWindow& window, const WindowFields* fields,
                                    WindowProgram program, const Localisation& words);

} // namespace lorvane
