// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Program.h"

#include "app/Application.h"
#include "app/BackendChoice.h"
#include "app/CodecKeeper.h"
#include "app/ControlClient.h"
#include "app/ControlNames.h"
#include "app/ControlService.h"
#include "app/Dictation.h"
#include "app/EndSignals.h"
#include "app/HistoryRecents.h"
#include "app/Shell.h"
#include "app/Stores.h"
#include "app/UnsentDelivery.h"
#include "app/UnsentTakes.h"
#include "base/PreferenceCatalogue.h"

#include <QGuiApplication>
#include <QProcess>

#include <cstdio>

namespace lorvane {

namespace {

int fail(const char* reason) {
    std::fprintf(stderr, "lorvane: %s\n", reason);
    return 1;
}

/// Only when the other has ended: two at once would want the same name, the same keys and the same files.
/// Whoever reads what this one prints may end with it, so the new one prints nothing.
void startAnew() {
    QProcess anew;
    anew.setProgram(QCoreApplication::applicationFilePath());
    anew.setStandardOutputFile(QProcess::nullDevice());
    anew.setStandardErrorFile(QProcess::nullDevice());
    anew.startDetached();
}

const auto* const displayGone = "the X display is gone; start lorvane again in the new session";
const auto* const compositorGone = "the compositor is gone; start lorvane again in the new session";

/// The whole program, made once.
class Program {
 public:
    Program(const Foundation& foundation, const QDBusConnection& session)
        : foundation_(foundation), session_(session), desktop_(foundation, session),
          displayLost_(desktop_.display.onLost([this] { displayLost(); })),
          compositorLost_(desktop_.wayland.onLost([this] { endWithoutDisplay(compositorGone); })),
          dictations_(desktop_.history), presence_(foundation, session, desktop_, dictations_),
          codec_(foundation.clock, desktop_.codec) {
        running = this;
    }
    ~Program() { running = nullptr; }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] bool hasDisplay() const { return desktop_.hasDisplay(); }
    void start();
    /// Says why when a library ends the process, as Qt does without its display.
    static void sayReasonOfExit();
    /// Whether it ended so that it starts anew.
    [[nodiscard]] bool isToStartAgain() const { return isToStartAgain_; }
    /// The event loop of the program; the exit status.
    [[nodiscard]] int live();

 private:
    void chooseFirstHoldKey();
    QCoro::Task<void> firstExchange(TaskScope scope);
    QCoro::Task<void> deliverUnsent(TaskScope scope);
    void useBackend(const QUrl& address);
    void showBackendGone();
    void displayLost();
    /// The take that has no text yet is kept for the process that is started then; whether there is one. What
    /// is in the history by now is written.
    bool keepUnsent();
    void endWithoutDisplay(const char* reason);
    void end(int status);
    void restart();

    const Foundation foundation_;
    QDBusConnection session_;
    DesktopAdapters desktop_;
    Handle displayLost_;
    Handle compositorLost_;
    HistoryRecents dictations_;
    DesktopPresence presence_;
    std::unique_ptr<Dictation> dictation_;
    std::unique_ptr<BackendChoice> backend_;
    QObject busObject_;
    std::unique_ptr<Shell> shell_;
    CodecKeeper codec_;
    Handle codecWatch_;
    TaskHandle unsentDelivery_;
    bool isToStartAgain_ = false;
    std::optional<int> ended_;
    static Program* running;
};

Program* Program::running = nullptr;

// Many keyboards of PCs have no right Super, which the hold key would fall back to.
void Program::chooseFirstHoldKey() {
    if (!foundation_.preferences.stored(preference::hotkey)) {
        foundation_.preferences.set(preference::hotkey, QString(rawName(Hotkey::rightControl)));
    }
}

void Program::start() {
    chooseFirstHoldKey();
    dictation_ = std::make_unique<Dictation>(foundation_, desktop_, presence_);
    DictationController& controller = dictation_->controller;
    const BackendChoice::Callbacks callbacks{[this](const QUrl& address) { useBackend(address); },
                                             [this] { showBackendGone(); }};
    backend_ = std::make_unique<BackendChoice>(foundation_, BundledBackend::standardExecutable(), callbacks);
    presence_.windows.onFirstRunOver = [&controller] { controller.finishOnboarding(); };
    unsentDelivery_ = startTask([this](TaskScope scope) { return deliverUnsent(std::move(scope)); });
    codecWatch_ = controller.subscribePhase([this](const Phase& phase) { codec_.follow(phase); });
    shell_ = std::make_unique<Shell>(foundation_, desktop_, presence_, *dictation_, [this] { end(0); });
    new ControlService(&busObject_, controller, session_, {[this] { end(0); }, [this] { restart(); }});
    controller.start([this](TaskScope scope) { return firstExchange(scope); });
    // Whoever asks from here on finds a program that hears the keys.
    session_.registerObject(control::objectPath, &busObject_);
}

// The bundled backend says its address only once it runs, and a registration before that would fail.
QCoro::Task<void> Program::firstExchange(TaskScope scope) {
    co_await backend_->known(scope);
    co_await dictation_->api.registerDevice(scope);
}

QCoro::Task<void> Program::deliverUnsent(TaskScope scope) {
    const UnsentTakes unsent(foundation_, UnsentTakes::standardFolder());
    if (!unsent.isEmpty()) {
        co_await backend_->known(scope);
        co_await unsent.deliver(dictation_->api, desktop_.journal, scope);
    }
}

bool Program::keepUnsent() {
    desktop_.history.writeNow(); // the take before may have landed a moment ago
    if (!dictation_) {
        return false;
    }
    const UnsentTakes unsent(foundation_, UnsentTakes::standardFolder());
    if (const auto underWay = dictation_->delivery.underWay()) {
        return unsent.keep(*underWay);
    }
    const bool isRecording = std::holds_alternative<Recording>(dictation_->controller.phase());
    return isRecording && dictation_->capture.isWorthSending() && unsent.keep(dictation_->capture.finish());
}

void Program::useBackend(const QUrl& address) {
    dictation_->api.setBackendURL(address);
    dictation_->http.backendStarted(BackendChoice::configured(foundation_.preferences).isEmpty());
}

void Program::showBackendGone() {
    const Localisation& words = foundation_.words;
    dictation_->status.showNotice(words.text("The local backend keeps stopping — see \"lorvane doctor\""),
                                  NoticeSeverity::error);
}

// Beside a compositor that lives on, the display may come back, and everything else is there: a new process
// finds out what is.
void Program::displayLost() {
    if (desktop_.choice.windowing == Windowing::wayland && desktop_.wayland.isAlive()) {
        std::fputs("lorvane: the X display beside the compositor is gone; starting anew\n", stderr);
        keepUnsent();
        restart();
    } else {
        endWithoutDisplay(displayGone);
    }
}

void Program::endWithoutDisplay(const char* reason) {
    isToStartAgain_ = keepUnsent();
    end(fail(reason));
}

// Before the program's own event loop runs, also in one that a library runs meanwhile, nobody hears an exit.
void Program::end(int status) {
    ended_ = status;
    QCoreApplication::exit(status);
}

int Program::live() { return ended_ ? *ended_ : QCoreApplication::exec(); }

void Program::restart() {
    isToStartAgain_ = true;
    end(0);
}

// Whoever finds the loss first ends the process; our own connection tells whether that is what happened.
void Program::sayReasonOfExit() {
    if (running == nullptr) {
        return;
    }
    running->desktop_.display.sync(); // which acts on it, if it is that
    running->isToStartAgain_ = running->isToStartAgain_ || running->keepUnsent();
    if (running->isToStartAgain_) {
        running->session_.unregisterService(control::serviceName);
        startAnew();
    }
    running->foundation_.log.drain();
}

/// The exit status.
int run(const QDBusConnection& session, bool& isToStartAgain) {
    const auto* const noDisplay =
        "there is no display (is DISPLAY or WAYLAND_DISPLAY set?); \"lorvane doctor\" tells more";
    // Without one there is no application with windows, and nothing that shows something can be made.
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        deliverUnsentTakes();
        return fail(noDisplay);
    }
    const UnexpectedExit unexpectedExit(Program::sayReasonOfExit);
    Stores stores;
    Program program(stores.foundation(), session);
    if (!program.hasDisplay()) {
        return fail(noDisplay);
    }
    program.start();
    const EndSignals endSignals([] { QCoreApplication::quit(); });
    const int status = program.live();
    isToStartAgain = program.isToStartAgain();
    return status;
}

} // namespace

int runProgram() {
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        deliverUnsentTakes();
        return fail("there is no session bus (is DBUS_SESSION_BUS_ADDRESS set?)");
    }
    if (!session.registerService(control::serviceName)) {
        std::fputs("lorvane: it runs already; \"lorvane status\" tells what it does\n", stderr);
        Command open;
        open.verb = Command::Verb::open;
        return sendCommand(open);
    }
    bool isToStartAgain = false;
    const int status = run(session, isToStartAgain);
    if (isToStartAgain) {
        session.unregisterService(control::serviceName);
        startAnew();
    }
    return status;
}

} // namespace lorvane
