// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/EndSignals.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace lorvane {

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing but this.
volatile std::sig_atomic_t signalPipe = -1;

void onSignal(int) {
    const char byte = 0;
    [[maybe_unused]] const auto written = write(signalPipe, &byte, 1);
}

void install(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : endingSignals) {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

EndSignals::EndSignals(std::function<void()> end) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
    signalPipe = writeEnd_;
    notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this, end = std::move(end)] {
                         notifier_->setEnabled(false);
                         end();
                     });
    install(onSignal);
}

EndSignals::~EndSignals() {
    install(SIG_DFL);
    signalPipe = -1;
    if (readEnd_ >= 0) {
        close(readEnd_);
        close(writeEnd_);
    }
}

} // namespace lorvane
