// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/DoctorRoads.h"
#include "base/Result.h"
#include "base/Task.h"
#include "input/Workspace.h"

#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace lorvane {

enum class SessionKind { none, x11, wayland };
/// What a program that shows nothing of itself is made of, since that decides what helps.
enum class WindowProgram { unknown, qt, chromium };

struct OpenWindow {
    ProcessId process = 0;
    QString title;
    /// As the user knows the application; may be empty.
    QString application;
};

/// What a process shows on the accessibility bus; how its fields can be used follows from it.
struct WindowFields {
    ProcessId process = 0;
    bool isSilent = false;
    bool hasWebContent = false;
    /// Fields of text that can be read, and how many of them take text through the accessibility interface
    /// besides.
    int readable = 0;
    int writable = 0;
    int terminals = 0;
};

struct AccessibilityFacts {
    bool busAnswers = false;
    bool isSwitchedOn = false;
};

struct BackendFacts {
    /// Empty when the backend that comes with the program is wanted and does not start.
    QString address;
    bool isHealthy = false;
    /// Whether this device has a token, or could get one.
    bool isRegistered = false;
    /// False for a setting that no backend can have as its address.
    bool isAddress = true;
};

/// Why there is no microphone.
enum class MicrophoneLack { noServer, refused, noSource };

/// What the doctor asks of the world; each is asked once. A probe that is left empty is reported as not
/// checked.
struct DoctorProbes {
    std::function<bool()> sessionBus;
    std::function<SessionKind()> session;
    std::function<QCoro::Task<AccessibilityFacts>(TaskScope)> accessibility;
    /// The version of the X Input extension; 2.2 or later sees every key.
    std::function<std::optional<std::pair<int, int>>()> keyWatching;
    std::function<bool()> syntheticKeys;
    /// What is known of the session's roads apart from the tray and the fields.
    std::function<QCoro::Task<RoadFacts>(TaskScope)> roads;
    /// The name of the default microphone.
    std::function<QCoro::Task<Result<QString, MicrophoneLack>>(TaskScope)> microphone;
    std::function<QCoro::Task<bool>(TaskScope)> keyStore;
    std::function<QCoro::Task<BackendFacts>(TaskScope)> backend;
    std::function<QCoro::Task<bool>(TaskScope)> tray;
    std::function<std::vector<OpenWindow>()> openWindows;
    std::function<QCoro::Task<std::vector<WindowFields>>(TaskScope)> windowFields;
    std::function<WindowProgram(ProcessId)> programOf;
};

} // namespace lorvane
