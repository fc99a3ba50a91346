// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DoctorReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace lorvane {

namespace {

QString statusName(DoctorLine::Status status) {
    switch (status) {
    case DoctorLine::Status::ok:
        return QStringLiteral("ok");
    case DoctorLine::Status::warning:
        return QStringLiteral("warn");
    case DoctorLine::Status::failed:
        break;
    }
    return QStringLiteral("fail");
}

QString textOf(const std::vector<DoctorLine>& lines) {
    QString text;
    for (const auto& line : lines) {
        text += QStringLiteral("  [%1] %2\n").arg(statusName(line.status), -4).arg(line.what);
        if (!line.remedy.isEmpty()) {
            text += QStringLiteral("         %1\n").arg(line.remedy);
        }
    }
    return text;
}

QJsonArray jsonOf(const std::vector<DoctorLine>& lines) {
    QJsonArray array;
    for (const auto& line : lines) {
        array.append(QJsonObject{{QStringLiteral("id"), line.id},
                                 {QStringLiteral("status"), statusName(line.status)},
                                 {QStringLiteral("what"), line.what},
                                 {QStringLiteral("remedy"), line.remedy}});
    }
    return array;
}

QString textOf(const std::vector<DoctorRoad>& roads, const Localisation& words) {
    QString text;
    for (const auto& road : roads) {
        const QString taken = road.taken.isEmpty() ? words.text("none") : road.taken;
        text += QStringLiteral("  %1 %2\n").arg(idOf(road.need) + QLatin1Char(':'), -8).arg(taken);
        if (!road.step.isEmpty()) {
            text += QStringLiteral("           %1\n           %2\n")
                        .arg(words.text("better: %1").arg(road.better), road.step);
        }
    }
    return text;
}

QJsonArray jsonOf(const std::vector<DoctorRoad>& roads) {
    QJsonArray array;
    for (const auto& road : roads) {
        array.append(QJsonObject{{QStringLiteral("need"), idOf(road.need)},
                                 {QStringLiteral("road"), road.taken},
                                 {QStringLiteral("better"), road.better},
                                 {QStringLiteral("step"), road.step}});
    }
    return array;
}

QString verdict(const DoctorReport& report, const Localisation& words) {
    if (!report.dictationWorks()) {
        return words.text("Dictation does not work.");
    }
    const bool isAllWell = std::all_of(report.lines.begin(), report.lines.end(), [](const DoctorLine& line) {
        return line.status == DoctorLine::Status::ok;
    });
    return isAllWell ? words.text("Dictation works.")
                     : words.text("Dictation works. What is marked \"warn\" can be made better.");
}

} // namespace

bool DoctorReport::dictationWorks() const {
    return std::none_of(lines.begin(), lines.end(),
                        [](const DoctorLine& line) { return line.status == DoctorLine::Status::failed; });
}

QString asText(const DoctorReport& report, const Localisation& words) {
    QString text = words.text("This desktop") + QLatin1Char('\n') + textOf(report.lines);
    if (!report.roads.empty()) {
        text += QLatin1Char('\n') + words.text("Roads") + QLatin1Char('\n') + textOf(report.roads, words);
    }
    if (!report.windows.empty()) {
        text += QLatin1Char('\n') + words.text("Open windows") + QLatin1Char('\n') + textOf(report.windows);
    }
    text += QLatin1Char('\n');
    return text + verdict(report, words) + QLatin1Char('\n');
}

QByteArray asJson(const DoctorReport& report) {
    const QJsonObject object{{QStringLiteral("dictationWorks"), report.dictationWorks()},
                             {QStringLiteral("checks"), jsonOf(report.lines)},
                             {QStringLiteral("roads"), jsonOf(report.roads)},
                             {QStringLiteral("windows"), jsonOf(report.windows)}};
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

} // namespace lorvane
