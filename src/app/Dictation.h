// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/MacAPI.h"
#include "app/DesktopAdapters.h"
#include "app/DesktopPresence.h"
#include "app/PatientHttpClient.h"
#include "audio/MacAudioDevices.h"
#include "core/DictationController.h"

namespace lorvane {

/// Everything that makes a dictation, one of each, over the desktop's adapters.
struct Dictation {
    Dictation(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence);

    PatientHttpClient http;
    MacAPI api;
    MacRecorder recorder;
    TakeEncoder encoder;
    TakeParts parts;
    TakeCapture capture;
    ScreenPresence screen;
    DictationStatus status;
    GestureKeys keys;
    TextInsertion insertion;
    LiveTyping typing;
    TextLanding landing;
    TakeDelivery delivery;
    DictationController controller;
};

} // namespace lorvane
