// SPDX-License-Identifier: GPL-3.0-or-later
// From a key that goes down to the monitor that is told of it, by the event loop as in the program. The hand
// is a thread of its own. Reference: a round trip of an XCB request on a connection of its own, which is what
// any word between this program and the X server costs; rounds by turns.
#include "base/testing/MemoryPreferenceStore.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "support/PhysicalKeyboard.h"

#include <QCoreApplication>
#include <QSemaphore>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

using namespace lorvane;
using Time = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int rounds = 2'000;
constexpr int patience = 5'000; // milliseconds
constexpr auto pause = std::chrono::milliseconds(2);

struct Figures {
    std::vector<double> told;
    std::vector<double> roundTrip;
};

/// The key's last move as the monitor was told of it.
struct Arrival {
    Time::time_point at;
    QSemaphore arrived;
};

double roundTrip(xcb_connection_t* xcb) {
    const auto before = Time::now();
    std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    return Microseconds(Time::now() - before).count();
}

bool isTold(Arrival& arrival) {
    const bool told = arrival.arrived.tryAcquire(1, patience);
    std::this_thread::sleep_for(pause);
    return told;
}

bool work(Arrival& arrival, Figures& figures) {
    PhysicalKeyboard hand;
    auto* const xcb = xcb_connect(nullptr, nullptr);
    bool good = true;
    for (int round = 0; good && round < rounds; ++round) {
        const auto before = Time::now();
        hand.press(keycode::rightControl);
        good = isTold(arrival);
        figures.told.push_back(Microseconds(arrival.at - before).count());
        hand.release(keycode::rightControl);
        good = isTold(arrival) && good;
        figures.roundTrip.push_back(roundTrip(xcb));
    }
    xcb_disconnect(xcb);
    return good;
}

double at(std::vector<double>& values, double share) {
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1,
                           static_cast<std::size_t>(share * static_cast<double>(values.size())))];
}

void print(const char* what, std::vector<double>& values) {
    std::printf("%s: p50 %.0f us, p95 %.0f us, p99 %.0f us\n", what, at(values, 0.5), at(values, 0.95),
                at(values, 0.99));
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QtClock clock;
    MemoryPreferenceStore store;
    Preferences preferences(store);
    const Localisation words;
    DiagnosticLog log(clock, std::nullopt, [](const QString&) {});
    X11Connection connection(log);
    X11KeyEvents keys(connection, {clock, preferences, words, log}, [] { return false; });
    Arrival arrival;
    const Handle monitor = keys.addGlobalMonitor(KeyEventKind::flagsChanged, [&arrival](const KeyEvent&) {
        arrival.at = Time::now();
        arrival.arrived.release();
    });
    connection.sync();
    Figures figures;
    std::atomic<bool> good{false};
    std::thread hand([&] {
        good = work(arrival, figures);
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    hand.join();
    if (!good) {
        std::fprintf(stderr, "key_bench: a key was not told\n");
        return 1;
    }
    print("press to callback", figures.told);
    print("XCB round trip", figures.roundTrip);
    std::printf("ratio of the medians: %.1f\n", at(figures.told, 0.5) / at(figures.roundTrip, 0.5));
    return 0;
}
