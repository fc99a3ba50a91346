// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>

namespace lorvane {

namespace {

using Backend = FakeDictationEndpoints;

/// A user, a desktop and a backend that do anything at any time.
class Chaos {
 public:
    explicit Chaos(unsigned seed) : random_(seed) {
        world_->preferences.set(preference::recordLimit, pick(2) == 0 ? 0 : 5);
        world_->start();
        world_->pasteKeys.onPosted = [this] {
            if (pick(3) != 0) {
                world_->pasteboard.pasteInto(DictationWorld::editor);
            }
        };
    }

    void act() {
        switch (pick(19)) {
        case 0:
            world_->keyboard.press(world_->keys.hotkey());
            break;
        case 1:
        case 2:
            world_->keyboard.release(world_->keys.hotkey());
            break;
        case 3:
            pressToggle();
            break;
        case 4:
            world_->keyboard.keyDown(8);
            break;
        case 5:
            world_->keyboard.keyDown(keyCode::escape);
            break;
        case 6:
            world_->clock.settle();
            break;
        case 7:
            world_->advance(0.01 * pick(60));
            break;
        case 8:
            world_->speak(0.05 * pick(30));
            break;
        case 9:
            world_->advance(0.1 * pick(40));
            break;
        case 10:
            world_->controller.toggleDictation();
            break;
        case 11:
            scriptBackend();
            break;
        case 12:
            world_->accessibility.setTrusted(pick(4) != 0);
            break;
        case 13:
            changeDesktop();
            break;
        case 14:
            world_->pasteboard.copyElsewhere(QString::number(pick(5)));
            break;
        case 15:
            changeMicrophone();
            break;
        case 16:
            changeKeys();
            break;
        case 17:
            changeField();
            break;
        default:
            callDirectly();
            break;
        }
    }

    DictationWorld& world() { return *world_; }

 private:
    int pick(int below) { return std::uniform_int_distribution(0, below - 1)(random_); }

    void pressToggle() {
        if (world_->keys.toggleHotkey()) {
            world_->tapToggle();
        }
    }
    DictationResult outcome() {
        switch (pick(7)) {
        case 0:
            return Backend::failed(Failure::Kind::server);
        case 1:
            return Backend::failed(Failure::Kind::tooLong);
        case 2:
            return Backend::failed(Failure::Kind::noSpeech);
        case 3:
            return Backend::dropped();
        case 4:
            return Backend::text(" ");
        default:
            return Backend::text("Some text.");
        }
    }
    void scriptBackend() {
        auto& script = pick(2) == 0 ? world_->backend.streams : world_->backend.uploads;
        script.push_back(Backend::answer(outcome(), {"So", "me"}, seconds(0.1 * pick(30))));
    }
    void changeDesktop() {
        world_->fields.secure = pick(4) == 0;
        world_->fields.delay = seconds(0.01 * pick(15));
        world_->pasteKeys.outcome = pick(4) == 0 ? KeysOutcome::notPosted : KeysOutcome::posted;
        world_->pasteKeys.delay = seconds(0.1 * pick(6));
        world_->pasteboard.ownerHangs = pick(4) == 0;
        world_->workspace.front->processId = DictationWorld::editor + (pick(4) == 0 ? 1 : 0);
    }
    void changeField() {
        if (pick(4) == 0) {
            world_->fields.field("body").text.reset();
        } else {
            world_->showField("Mine. ");
        }
        world_->field.lag = seconds(0.01 * pick(30));
        world_->field.caretLag = pick(3);
        world_->field.ignoresBackspace = pick(4) == 0;
        world_->insertionWay.hasNoEffect = pick(4) == 0;
        world_->insertionWay.outcome = pick(4) == 0 ? PostOutcome::unknown : PostOutcome::posted;
        world_->editingKeys.held = pick(4) == 0 ? modifierFlag::shift : 0;
    }
    void changeMicrophone() {
        world_->engines.system().authorisation =
            pick(4) == 0 ? AudioAuthorisation::denied : AudioAuthorisation::authorised;
        world_->engines.system().startFailure.reset();
        if (pick(4) == 0) {
            world_->engines.system().startFailure = EngineFailure{false, "no"};
        }
    }
    void changeKeys() {
        const auto key = allHotkeys.at(static_cast<std::size_t>(pick(5)));
        if (pick(2) == 0) {
            world_->controller.setHotkey(key);
        } else {
            world_->controller.setToggleHotkey(key);
        }
    }
    void callDirectly() {
        switch (pick(5)) {
        case 0:
            world_->controller.stopDictation();
            break;
        case 1:
            world_->controller.cancelRecording();
            break;
        case 2:
            world_->controller.cancelProcessing();
            break;
        case 3:
            world_->controller.copyLastTranscript();
            break;
        default:
            world_->controller.hideBar(seconds(10));
            break;
        }
    }

    std::mt19937 random_;
    std::unique_ptr<DictationWorld> world_ = std::make_unique<DictationWorld>();
};

void run(int sequences, int actions, const std::function<void(DictationWorld&)>& check) {
    for (int seed = 0; seed < sequences && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Chaos chaos(static_cast<unsigned>(seed));
        for (int i = 0; i < actions; ++i) {
            chaos.act();
            const auto& world = chaos.world();
            ASSERT_EQ(world.isWatchingEscape(), isTakeAlive(world.phase()));
            ASSERT_FALSE(world.keys.toggleHotkey() == world.keys.hotkey());
        }
        check(chaos.world());
    }
}

/// Escape means something else to the system while certain modifiers are held.
void letGoOfAllKeys(DictationWorld& world) {
    for (const Hotkey key : allHotkeys) {
        world.keyboard.release(key);
    }
}

TEST(RandomGestures, EscapeAlwaysEndsAtIdle) {
    run(400, 60, [](DictationWorld& world) {
        letGoOfAllKeys(world);
        if (isTakeAlive(world.phase())) {
            world.escape();
            EXPECT_TRUE(world.isIdle());
        }
        world.advance(60);
        EXPECT_FALSE(world.isProcessing());
    });
}

TEST(RandomGestures, WhateverHappenedTheNextTakeWorks) {
    run(400, 60, [](DictationWorld& world) {
        letGoOfAllKeys(world);
        world.escape();
        world.advance(60);
        ASSERT_TRUE(world.isIdle());
        EXPECT_EQ(world.clock.pendingTimers(), world.recorder.isRecording() ? 1U : 0U);
        world.preferences.set(preference::recordLimit, 0);
        world.backend.streams.clear();
        world.backend.uploads.clear();
        world.engines.system() = FakeAudioSystem();
        world.accessibility.setTrusted(true);
        world.fields.secure = false;
        world.fields.delay = Duration::zero();
        world.fields.field("body").text.reset();
        world.pasteKeys.outcome = KeysOutcome::posted;
        world.controller.startDictation(Source::toggle);
        ASSERT_TRUE(world.isRecording());
        world.speak(1);
        world.controller.stopDictation();
        world.advance(1.3);
        EXPECT_TRUE(world.isDone());
        world.advance(20);
        EXPECT_TRUE(world.isIdle());
        EXPECT_FALSE(world.pasteboard.isLent());
    });
}

TEST(RandomGestures, DeliveryAlwaysComesToAnEndByItself) {
    run(400, 60, [](DictationWorld& world) {
        world.advance(60);
        EXPECT_FALSE(world.isProcessing());
        EXPECT_FALSE(world.isDone());
        EXPECT_EQ(world.notice(), "");
        EXPECT_FALSE(world.pasteboard.isLent());
    });
}

} // namespace

} // namespace lorvane
