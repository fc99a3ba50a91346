// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Doctor.h"

namespace lorvane {

namespace {

using Status = DoctorLine::Status;

struct Finding {
    Status status;
    QString what;
    QString remedy;
};

Finding hidden(WindowProgram program, const Localisation& words) {
    const QString what = words.text("%1: text can be pasted, but its fields cannot be read.");
    switch (program) {
    case WindowProgram::qt:
        return {Status::warning, what,
                words.text("Start it again: it looks for accessibility only when it starts.")};
    case WindowProgram::chromium:
        return {Status::warning, what, words.text("Start it again with --force-renderer-accessibility.")};
    case WindowProgram::unknown:
        break;
    }
    return {Status::warning, what, QString()};
}

Finding findingOf(const WindowFields* fields, WindowProgram program, const Localisation& words) {
    if (fields == nullptr) {
        return hidden(program, words);
    }
    if (fields->isSilent) {
        return {Status::warning, words.text("%1: it does not answer."),
                words.text("Wait until it is done, or start it again.")};
    }
    if (program == WindowProgram::chromium && !fields->hasWebContent) {
        return hidden(program, words);
    }
    if (fields->writable > 0) {
        return {Status::ok, words.text("%1: fields can be read, and text can be typed into them live."),
                QString()};
    }
    if (fields->readable > 0) {
        return {Status::ok,
                words.text("%1: fields can be read, and text can be typed into them live by keys."),
                QString()};
    }
    if (fields->terminals > 0) {
        return {Status::ok, words.text("%1: a terminal; text is pasted."), QString()};
    }
    return {Status::ok, words.text("%1: no field of text is open in it."), QString()};
}

} // namespace

DoctorLine windowLine(const OpenWindow& window, const WindowFields* fields, WindowProgram program,
                      const Localisation& words) {
    const QString name = window.title.isEmpty() ? window.application : window.title;
    const auto finding = findingOf(fields, program, words);
    return {QStringLiteral("window"), finding.status, finding.what.arg(name), finding.remedy};
}

} // namespace lorvane
