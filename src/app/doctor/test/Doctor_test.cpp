// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AccessibilityProbes.h"
#include "app/doctor/Doctor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace lorvane {
namespace {

using Status = DoctorLine::Status;

template <typename T>
QCoro::Task<T> told(T value) {
    co_return value;
}

/// A desktop on which everything works; each test breaks one thing.
DoctorProbes healthy() {
    DoctorProbes probes;
    probes.sessionBus = [] { return true; };
    probes.session = [] { return SessionKind::x11; };
    probes.accessibility = [](TaskScope) { return told(AccessibilityFacts{true, true}); };
    probes.keyWatching = [] { return std::make_pair(2, 3); };
    probes.syntheticKeys = [] { return true; };
    probes.microphone = [](TaskScope) {
        return told(Result<QString, MicrophoneLack>(QStringLiteral("Built-in")));
    };
    probes.keyStore = [](TaskScope) { return told(true); };
    probes.backend = [](TaskScope) {
        return told(BackendFacts{QStringLiteral("http://127.0.0.1:1"), true, true});
    };
    probes.tray = [](TaskScope) { return told(true); };
    return probes;
}

DoctorReport examine(DoctorProbes probes) {
    const Localisation words;
    Doctor doctor(std::move(probes), words);
    std::optional<DoctorReport> report;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        DoctorReport found = co_await doctor.examine(scope);
        report.emplace(std::move(found));
    });
    return report.value_or(DoctorReport());
}

DoctorLine lineOf(const DoctorReport& report, const char* id) {
    for (const auto& line : report.lines) {
        if (line.id == QLatin1String(id)) {
            return line;
        }
    }
    ADD_FAILURE() << "no line " << id;
    return {};
}

void expectMend(const DoctorLine& line, Status status) {
    EXPECT_EQ(line.status, status) << line.what.toStdString();
    EXPECT_FALSE(line.remedy.isEmpty()) << line.what.toStdString();
}

TEST(Doctor, AHealthyDesktopHasNothingToMend) {
    const auto report = examine(healthy());
    EXPECT_EQ(report.lines.size(), 8U);
    for (const auto& line : report.lines) {
        EXPECT_EQ(line.status, Status::ok) << line.what.toStdString();
        EXPECT_TRUE(line.remedy.isEmpty());
    }
    EXPECT_TRUE(report.dictationWorks());
}

TEST(Doctor, EachThingThatDictationNeedsFailsByItselfAndSaysHowToMendIt) {
    const std::vector<std::pair<const char*, std::function<void(DoctorProbes&)>>> breaks{
        {"bus", [](auto& probes) { probes.sessionBus = [] { return false; }; }},
        {"session", [](auto& probes) { probes.session = [] { return SessionKind::none; }; }},
        {"accessibility",
         [](auto& probes) {
             probes.accessibility = [](TaskScope) { return told(AccessibilityFacts{false, false}); };
         }},
        {"accessibility",
         [](auto& probes) {
             probes.accessibility = [](TaskScope) { return told(AccessibilityFacts{true, false}); };
         }},
        {"keys", [](auto& probes) { probes.keyWatching = [] { return std::make_pair(2, 1); }; }},
        {"keys", [](auto& probes) { probes.keyWatching = [] { return std::nullopt; }; }},
        {"paste", [](auto& probes) { probes.syntheticKeys = [] { return false; }; }},
        {"microphone",
         [](auto& probes) {
             probes.microphone = [](TaskScope) {
                 return told(Result<QString, MicrophoneLack>(failure(MicrophoneLack::noServer)));
             };
         }},
        {"backend",
         [](auto& probes) {
             probes.backend = [](TaskScope) {
                 return told(BackendFacts{QStringLiteral("http://127.0.0.1:1"), false, true});
             };
         }},
    };
    for (const auto& [id, breakIt] : breaks) {
        auto probes = healthy();
        breakIt(probes);
        const auto report = examine(probes);
        expectMend(lineOf(report, id), Status::failed);
        EXPECT_FALSE(report.dictationWorks()) << id;
    }
}

TEST(Doctor, SaysWhyThereIsNoMicrophone) {
    const auto sentenceFor = [](MicrophoneLack lack) {
        auto probes = healthy();
        probes.microphone = [lack](TaskScope) {
            return told(Result<QString, MicrophoneLack>(failure(lack)));
        };
        return lineOf(examine(probes), "microphone").what;
    };
    EXPECT_EQ(sentenceFor(MicrophoneLack::noServer), "There is no microphone: no sound server answers.");
    EXPECT_EQ(sentenceFor(MicrophoneLack::refused),
              "There is no microphone: the sound server refuses this program.");
    EXPECT_EQ(sentenceFor(MicrophoneLack::noSource), "There is no microphone: the sound server has none.");
}

TEST(Doctor, TellsABackendThatIsAbsentFromAnAddressThatIsNone) {
    const auto sentenceFor = [](BackendFacts facts) {
        auto probes = healthy();
        probes.backend = [facts](TaskScope) { return told(facts); };
        return lineOf(examine(probes), "backend").what;
    };
    EXPECT_EQ(sentenceFor({QStringLiteral("http://127.0.0.1:1"), false, true}),
              "The backend does not answer at http://127.0.0.1:1.");
    EXPECT_EQ(sentenceFor({}), "The backend that comes with Lorvane does not start.");
    EXPECT_EQ(sentenceFor({QStringLiteral("garbage"), false, true, false}),
              "garbage is not the address of a backend; one looks like http://127.0.0.1:8080.");
}

TEST(Doctor, WhatIsOnlyConvenientWarnsAndDictationWorks) {
    auto probes = healthy();
    probes.keyStore = [](TaskScope) { return told(false); };
    probes.tray = [](TaskScope) { return told(false); };
    probes.backend = [](TaskScope) {
        return told(BackendFacts{QStringLiteral("http://127.0.0.1:1"), true, false});
    };
    const auto report = examine(probes);
    for (const char* id : {"keys-store", "tray", "backend"}) {
        expectMend(lineOf(report, id), Status::warning);
    }
    EXPECT_TRUE(report.dictationWorks());
}

DoctorProbes inWayland(RoadFacts facts) {
    auto probes = healthy();
    probes.session = [] { return SessionKind::wayland; };
    probes.keyWatching = nullptr;
    probes.syntheticKeys = nullptr;
    facts.isWayland = true;
    probes.roads = [facts](TaskScope) { return told(facts); };
    return probes;
}

TEST(Doctor, AWaylandSessionWithItsRoadsHasNothingToMend) {
    RoadFacts facts;
    facts.hold = QStringLiteral("bindings");
    facts.typing = QStringLiteral("input method");
    facts.paste = QStringLiteral("virtual keyboard");
    const auto report = examine(inWayland(facts));
    for (const auto& line : report.lines) {
        EXPECT_EQ(line.status, Status::ok) << line.what.toStdString();
    }
    EXPECT_EQ(report.roads.size(), 6U);
}

TEST(Doctor, AWaylandSessionWithoutRoadsSaysHowToOpenThem) {
    RoadFacts facts;
    facts.holdSetup = QStringLiteral("An extension is installed.");
    const auto report = examine(inWayland(facts));
    expectMend(lineOf(report, "keys"), Status::warning);
    EXPECT_TRUE(lineOf(report, "keys").remedy.contains("lorvane setup hold"));
    expectMend(lineOf(report, "paste"), Status::warning);
    EXPECT_TRUE(report.dictationWorks()) << "fields that take insertion can be dictated into";
}

TEST(Doctor, JsonHasARoadForEachNeed) {
    RoadFacts facts;
    facts.hold = QStringLiteral("bindings");
    const auto object = QJsonDocument::fromJson(asJson(examine(inWayland(facts)))).object();
    const QJsonArray roads = object.value(QStringLiteral("roads")).toArray();
    ASSERT_EQ(roads.size(), 6);
    EXPECT_EQ(roads.first().toObject().value(QStringLiteral("need")).toString(), "hold");
    EXPECT_EQ(roads.first().toObject().value(QStringLiteral("road")).toString(), "bindings");
    for (const auto* key : {"better", "step"}) {
        EXPECT_TRUE(roads.first().toObject().contains(QLatin1String(key))) << key;
    }
}

TEST(Doctor, AProbeThatIsMissingIsLeftOut) {
    auto probes = healthy();
    probes.tray = {};
    EXPECT_EQ(examine(probes).lines.size(), 7U);
}

WindowFields fieldsOf(ProcessId process) {
    WindowFields fields;
    fields.process = process;
    return fields;
}

TEST(Doctor, EachWindowIsMatchedWithWhatItsProcessShows) {
    auto probes = healthy();
    probes.openWindows = [] {
        return std::vector<OpenWindow>{{10, QStringLiteral("Notes"), {}}, {11, QStringLiteral("Shell"), {}}};
    };
    probes.windowFields = [](TaskScope) {
        auto empty = fieldsOf(10);
        auto full = fieldsOf(10);
        full.readable = 2;
        full.writable = 1;
        return told(std::vector<WindowFields>{full, empty});
    };
    const auto report = examine(probes);
    ASSERT_EQ(report.windows.size(), 2U);
    EXPECT_EQ(report.windows[0].what,
              QStringLiteral("Notes: fields can be read, and text can be typed into them live."));
    EXPECT_EQ(report.windows[1].what,
              QStringLiteral("Shell: text can be pasted, but its fields cannot be read."));
    EXPECT_TRUE(report.dictationWorks()) << "windows never decide";
}

class WindowFinding : public ::testing::Test {
 protected:
    DoctorLine line(const WindowFields* shown, WindowProgram program) const {
        return windowLine(OpenWindow{1, QStringLiteral("W"), {}}, shown, program, words);
    }
    Localisation words;
    WindowFields fields = fieldsOf(1);
};

TEST_F(WindowFinding, AHiddenQtProgramIsStartedAgain) {
    const auto found = line(nullptr, WindowProgram::qt);
    expectMend(found, Status::warning);
    EXPECT_TRUE(found.remedy.contains(QStringLiteral("Start it again")));
}

TEST_F(WindowFinding, ABrowserWithoutItsPageNeedsItsSwitch) {
    for (const auto* shown :
         {static_cast<const WindowFields*>(nullptr), static_cast<const WindowFields*>(&fields)}) {
        const auto found = line(shown, WindowProgram::chromium);
        expectMend(found, Status::warning);
        EXPECT_TRUE(found.remedy.contains(QStringLiteral("--force-renderer-accessibility")));
    }
    fields.hasWebContent = true;
    fields.readable = 1;
    EXPECT_EQ(line(&fields, WindowProgram::chromium).status, Status::ok);
}

TEST_F(WindowFinding, NothingHelpsAProgramThatKnowsNoAccessibility) {
    const auto found = line(nullptr, WindowProgram::unknown);
    EXPECT_EQ(found.status, Status::warning);
    EXPECT_TRUE(found.remedy.isEmpty());
}

TEST_F(WindowFinding, TheWaysIntoAFieldAreTold) {
    EXPECT_TRUE(line(&fields, WindowProgram::qt).what.contains(QStringLiteral("no field of text")));
    fields.terminals = 1;
    EXPECT_TRUE(line(&fields, WindowProgram::unknown).what.contains(QStringLiteral("terminal")));
    fields.readable = 1;
    EXPECT_TRUE(line(&fields, WindowProgram::unknown).what.contains(QStringLiteral("live by keys")));
    fields.writable = 1;
    EXPECT_TRUE(line(&fields, WindowProgram::unknown).what.endsWith(QStringLiteral("into them live.")));
    fields.isSilent = true;
    expectMend(line(&fields, WindowProgram::unknown), Status::warning);
}

TEST(DoctorReport, JsonCarriesEveryLineUnderStableNames) {
    DoctorReport report;
    report.lines.push_back(
        {QStringLiteral("tray"), Status::warning, QStringLiteral("w"), QStringLiteral("r")});
    report.windows.push_back({QStringLiteral("window"), Status::ok, QStringLiteral("o"), QString()});
    const auto object = QJsonDocument::fromJson(asJson(report)).object();
    EXPECT_EQ(object[QStringLiteral("dictationWorks")], true);
    const auto check = object[QStringLiteral("checks")].toArray().first().toObject();
    EXPECT_EQ(check[QStringLiteral("id")], QStringLiteral("tray"));
    EXPECT_EQ(check[QStringLiteral("status")], QStringLiteral("warn"));
    EXPECT_EQ(check[QStringLiteral("what")], QStringLiteral("w"));
    EXPECT_EQ(check[QStringLiteral("remedy")], QStringLiteral("r"));
    EXPECT_EQ(object[QStringLiteral("windows")].toArray().size(), 1);
}

TEST(DoctorReport, TextShowsStatusAndRemedy) {
    DoctorReport report;
    report.lines.push_back(
        {QStringLiteral("paste"), Status::failed, QStringLiteral("broken"), QStringLiteral("mend")});
    const QString text = asText(report, Localisation());
    EXPECT_TRUE(text.contains(QStringLiteral("[fail] broken\n         mend\n"))) << text.toStdString();
    EXPECT_TRUE(text.endsWith(QStringLiteral("Dictation does not work.\n")));
}

TEST(DoctorReport, TheVerdictSaysWhetherSomethingCouldBeBetter) {
    DoctorReport report;
    report.lines.push_back({QStringLiteral("tray"), Status::ok, QStringLiteral("there"), QString()});
    EXPECT_TRUE(asText(report, Localisation()).endsWith(QStringLiteral("\nDictation works.\n")));
    report.lines.push_back({QStringLiteral("keys"), Status::warning, QStringLiteral("w"), QString()});
    EXPECT_TRUE(asText(report, Localisation()).endsWith(QStringLiteral("can be made better.\n")));
}

TEST(SessionKind, TheSessionsOwnWordCountsElseItsDisplays) {
    const QString none;
    const QString x(QStringLiteral(":0"));
    const QString wayland(QStringLiteral("wayland-0"));
    EXPECT_EQ(sessionKind(QStringLiteral("x11"), x, none), SessionKind::x11);
    EXPECT_EQ(sessionKind(QStringLiteral("wayland"), x, wayland), SessionKind::wayland);
    EXPECT_EQ(sessionKind(none, x, wayland), SessionKind::wayland);
    EXPECT_EQ(sessionKind(none, x, none), SessionKind::x11);
    EXPECT_EQ(sessionKind(QStringLiteral("tty"), none, none), SessionKind::none);
}

} // namespace
} // namespace lorvane
