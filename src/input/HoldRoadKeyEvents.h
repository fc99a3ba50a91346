// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Signal.h"
#include "input/HoldPress.h"
#include "input/HoldRoad.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"
#include "input/KeyMonitorList.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace lorvane {

/// The keys of the desktop by whatever roads there are. The hold key and the hands-free key, as the
/// preferences name them, each come by the best road that offers them now; Escape is looked for while a local
/// monitor of key presses is there. Nothing is watched while nobody monitors. No press that was told stays
/// without its release: not when the road loses it (HoldPress), nor when the road goes. Main thread.
class HoldRoadKeyEvents final : public KeyEvents {
 public:
    /// `roads`: best first; they outlive this. `programHasFocus`: whether one of the program's own windows
    /// has the keyboard.
    HoldRoadKeyEvents(const Foundation& foundation, std::vector<HoldRoad*> roads,
                      std::function<bool()> programHasFocus);
    HoldRoadKeyEvents(const HoldRoadKeyEvents&) = delete;
    HoldRoadKeyEvents& operator=(const HoldRoadKeyEvents&) = delete;
    ~HoldRoadKeyEvents() override = default;

    [[nodiscard]] Handle addGlobalMonitor(KeyEventKind kind,
                                          std::function<void(const KeyEvent&)> observer) override;
    [[nodiscard]] Handle addLocalMonitor(KeyEventKind kind,
                                         std::function<bool(const KeyEvent&)> observer) override;

    /// The road by which the hold key and the hands-free key come, or would come if somebody monitored;
    /// nothing when there is none, or no such key is chosen.
    [[nodiscard]] const HoldRoad* holdRoad() const;
    [[nodiscard]] const HoldRoad* handsFreeRoad() const;
    /// Told when either of them may have changed.
    [[nodiscard]] Handle onRoadsChanged(std::function<void()> changed) {
        return roadsChanged_.subscribe(std::move(changed));
    }

 private:
    struct Choice {
        HoldRoad* road = nullptr;
        HoldKeyOffer key;
        friend bool operator==(const Choice&, const Choice&) = default;
    };
    struct Watched {
        Choice choice;
        /// None for Escape, which is told like any other key.
        std::unique_ptr<HoldPress> press;
        /// The log has said that it is in force.
        bool isAnnounced = false;
    };
    struct RoadState {
        std::vector<int> keys;
        Handle watch;
        Handle change;
        HoldOffer offer;
        /// Keys whose holding it turned out not to see, as long as it offers the same.
        std::set<int> blindTo;
    };

    [[nodiscard]] std::optional<Choice> choose(int keyCode, bool needsTaps) const;
    [[nodiscard]] std::optional<Choice> holdChoice() const;
    [[nodiscard]] std::optional<Choice> handsFreeChoice() const;
    [[nodiscard]] std::vector<Choice> wanted() const;

    void follow();
    void followSoon();
    void dropAllBut(const std::vector<Choice>& choices);
    void watch(HoldRoad& road, std::vector<int> keys);
    void announce();
    void roadChanged(HoldRoad& road);

    void handleEdge(HoldRoad& road, const HoldEdge& edge);
    void handleOther(HoldRoad& road, const HoldEdge& edge);
    void moved(int keyCode, bool isDown, Instant time);
    void noteOtherKey(Instant time);
    void closeBits(Instant time);
    void deliver(KeyEventKind kind, int keyCode, Instant time);
    void forgetOthersOf(HoldRoad& road);
    [[nodiscard]] std::uint32_t flags() const;

    Clock& clock_;
    Preferences& preferences_;
    DiagnosticLog& log_;
    std::vector<HoldRoad*> roads_;
    std::function<bool()> programHasFocus_;
    std::map<HoldRoad*, RoadState> states_;
    std::map<int, Watched> watched_;
    /// Modifiers that are down besides the watched keys, with the road that told of them.
    std::map<int, HoldRoad*> others_;
    /// Watched keys that went up while their left twin was down, so that their bit was still set.
    std::set<int> openBits_;
    KeyMonitorList monitors_{[this] { followSoon(); }};
    Signal<> roadsChanged_;
    Handle followLater_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
