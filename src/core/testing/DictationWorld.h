// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/testing/FakeDictationEndpoints.h"
#include "audio/testing/FakeAudioEngine.h"
#include "audio/testing/FakeInputDevices.h"
#include "audio/testing/FakeTakeCodec.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "core/DictationController.h"
#include "core/testing/FakeEditor.h"
#include "core/testing/FakePasteKeys.h"
#include "core/testing/FakePasteboard.h"
#include "core/testing/FakePresence.h"
#include "core/testing/FakeTakeJournal.h"
#include "input/testing/FakeAccessibility.h"
#include "input/testing/FakeFieldAccess.h"
#include "input/testing/FakeKeyEvents.h"
#include "input/testing/FakeWorkspace.h"

#include <QTemporaryDir>

namespace lorvane {

/// A whole desktop of fakes around a real dictation. An editor is in front; it takes what is pasted into it.
/// The hold key is `rightCommand`, hands-free is `rightOption`, the first run is over.
struct DictationWorld {
    static constexpr ProcessId editor = 42;

    DictationWorld();

    /// Starts the program.
    void start() { controller.start({}); }
    /// Sound comes in for so long.
    void speak(double duration);
    /// Presses the hold key, speaks, and lets go.
    void holdFor(double duration);
    void tapToggle();
    void escape();
    /// The editor's field can be read from now on; the caret is at `caret`, or at its end.
    void showField(const QString& text = QString(""), std::optional<qint64> caret = {});
    void advance(double duration) { clock.advance(seconds(duration)); }

    [[nodiscard]] const Phase& phase() const { return controller.phase(); }
    [[nodiscard]] bool isIdle() const { return isIn<Idle>(phase()); }
    [[nodiscard]] bool isRecording() const { return isIn<Recording>(phase()); }
    [[nodiscard]] bool isProcessing() const { return isIn<Processing>(phase()); }
    [[nodiscard]] bool isDone() const { return isIn<Done>(phase()); }
    /// The text on the pill, empty when there is no message; with "error: " before it by severity.
    [[nodiscard]] QString notice() const;
    [[nodiscard]] bool isWatchingEscape() const;
    /// The log lines that hold this.
    [[nodiscard]] QStringList logged(const QString& fragment) const { return world.lines.filter(fragment); }

    TestFoundation world;
    VirtualClock& clock = world.clock;
    Preferences& preferences = world.preferences;
    QTemporaryDir folder;
    FakeKeyEvents keyboard{clock};
    FakeAccessibility accessibility;
    FakeWorkspace workspace;
    FakeFieldAccess fields{clock};
    /// The field of the editor. It cannot be read, so that nothing is typed live, until `showField`.
    FakeEditor field{clock, fields, editor, "body"};
    FakeFragmentPoster insertionWay{"insertion", field};
    FakeFragmentPoster keysWay{"keys", field};
    FakeEditingKeys editingKeys{field};
    FakeAudioEngineFactory engines;
    FakeInputDevices devices;
    FakeTakeCodec codec;
    FakeDictationEndpoints backend{clock};
    FakePasteboard pasteboard{clock};
    FakePasteKeys pasteKeys{clock};
    FakePill pill;
    FakeWindows windows;
    FakeChime chime;
    FakeTakeJournal journal;
    /// What the editor was given, paste by paste.
    QStringList pasted;

    MacRecorder recorder{world.foundation, engines, devices};
    TakeEncoder encoder{world.foundation, codec, TakeFolders{folder.path(), folder.path()}};
    ScreenPresence screen{clock, pill, windows};
    DictationStatus status{clock, screen, accessibility};
    GestureKeys keys{world.foundation, keyboard};
    TakeParts parts{world.foundation, backend, encoder};
    TakeCapture capture{world.foundation, recorder, parts};
    TextInsertion insertion{world.foundation, pasteboard, pasteKeys, fields, workspace};
    LiveTyping typing{world.foundation,
                      TypingDesktop{workspace, accessibility, fields, editingKeys, {&insertionWay, &keysWay}},
                      insertion};
    TextLanding landing{world.foundation, status, accessibility, typing, insertion, chime};
    TakeDelivery delivery{world.foundation, backend, status, landing, journal, workspace};
    DictationController controller{world.foundation, status, screen, keys, capture, delivery};
    /// Every phase there was, in order.
    std::vector<Phase> phases;
    Handle phaseRecord;
};

} // namespace lorvane
