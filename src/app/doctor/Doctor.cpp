// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Doctor.h"

#include <algorithm>

namespace lorvane {

namespace {
using Status = DoctorLine::Status;

void add(DoctorReport& report, const char* id, Status status, const QString& what,
         const QString& remedy = {}) {
    report.lines.push_back(
        {QString::fromLatin1(id), status, what, status == Status::ok ? QString() : remedy});
}

QString reasonFor(MicrophoneLack lack, const Localisation& words) {
    switch (lack) {
    case MicrophoneLack::noServer:
        return words.text("no sound server answers");
    case MicrophoneLack::refused:
        return words.text("the sound server refuses this program");
    case MicrophoneLack::noSource:
        break;
    }
    return words.text("the sound server has none");
}
} // namespace

Doctor::Doctor(DoctorProbes probes, const Localisation& words) : probes_(std::move(probes)), words_(words) {}

QCoro::Task<DoctorReport> Doctor::examine(TaskScope scope) {
    DoctorReport report;
    session(report);
    keys(report);
    if (probes_.accessibility) {
        const auto facts = co_await probes_.accessibility(scope);
        accessibility(report, facts);
    }
    co_await services(&report, scope);
    co_await roads(&report, scope);
    co_await windows(&report, scope);
    co_return report;
}

void Doctor::session(DoctorReport& report) const {
    if (probes_.sessionBus && !probes_.sessionBus()) {
        add(report, "bus", Status::failed, words_.text("There is no session bus."),
            words_.text("Start it inside your desktop; elsewhere, set DBUS_SESSION_BUS_ADDRESS."));
    }
    if (!probes_.session) {
        return;
    }
    const SessionKind kind = probes_.session();
    if (kind == SessionKind::x11) {
        add(report, "session", Status::ok, words_.text("The session is X11."));
    } else if (kind == SessionKind::wayland) {
        add(report, "session", Status::ok, words_.text("The session is Wayland."));
    } else {
        add(report, "session", Status::failed, words_.text("There is no display."),
            words_.text("Run this from inside your desktop."));
    }
}

void Doctor::keys(DoctorReport& report) const {
    if (probes_.keyWatching) {
        const auto version = probes_.keyWatching();
        const bool good = version && *version >= std::make_pair(2, 2);
        add(report, "keys", good ? Status::ok : Status::failed,
            good ? words_.text("The hold key can be seen in every application.")
                 : words_.text("The hold key cannot be seen: there is no X server with XInput 2.2."),
            words_.text("Log in to an X11 (Xorg) session of an X server that is not older than 2012."));
    }
    if (probes_.syntheticKeys) {
        const bool good = probes_.syntheticKeys();
        add(report, "paste", good ? Status::ok : Status::failed,
            good ? words_.text("Keys can be posted, so text can be pasted.")
                 : words_.text("Keys cannot be posted: there is no X server with the XTEST extension."),
            words_.text("Log in to an X11 (Xorg) session; in a remote one, allow the XTEST extension."));
    }
}

QCoro::Task<void> Doctor::roads(DoctorReport* report, TaskScope scope) {
    if (!probes_.roads) {
        co_return;
    }
    const auto isGood = [report](const char* id) {
        return std::any_of(report->lines.begin(), report->lines.end(), [id](const DoctorLine& line) {
            return line.id == QLatin1String(id) && line.status == Status::ok;
        });
    };
    RoadFacts facts = co_await probes_.roads(scope);
    facts.hasTray = isGood("tray");
    facts.readsFields = isGood("accessibility");
    if (facts.isWayland) {
        roadKeys(*report, facts);
    }
    report->roads = roadsFrom(facts, words_);
}

void Doctor::roadKeys(DoctorReport& report, const RoadFacts& facts) const {
    const bool sees = !facts.hold.isEmpty();
    add(report, "keys", sees ? Status::ok : Status::warning,
        sees ? words_.text("The hold key can be seen in every application.")
             : words_.text("The hold key cannot be seen in this session."),
        facts.holdSetup.isEmpty() ? words_.text("Bind one to \"lorvane toggle\" in your desktop's settings.")
                                  : words_.text("Run \"lorvane setup %1\".").arg(QStringLiteral("hold")));
    const bool posts = !facts.paste.isEmpty() || !facts.typing.isEmpty();
    add(report, "paste", posts ? Status::ok : Status::warning,
        posts
            ? words_.text("Text can be typed or pasted into every application.")
            : words_.text(
                  "Text can be inserted through accessibility only; elsewhere it is left on the clipboard."),
        words_.text("Run \"lorvane setup %1\".").arg(QStringLiteral("typing")));
}

void Doctor::accessibility(DoctorReport& report, AccessibilityFacts facts) const {
    if (!facts.busAnswers) {
        add(report, "accessibility", Status::failed, words_.text("The accessibility bus does not answer."),
            words_.text("Install the package at-spi2-core, then log out and in again."));
    } else if (!facts.isSwitchedOn) {
        add(report, "accessibility", Status::failed, words_.text("Accessibility is switched off."),
            words_.text(
                "Start Lorvane: it switches accessibility on. Then start the other applications again."));
    } else {
        add(report, "accessibility", Status::ok, words_.text("Accessibility is on, so fields can be read."));
    }
}

void Doctor::microphone(DoctorReport& report, const Result<QString, MicrophoneLack>& found) const {
    if (found) {
        add(report, "microphone", Status::ok, words_.text("The microphone is %1.").arg(*found));
    } else {
        add(report, "microphone", Status::failed,
            words_.text("There is no microphone: %1.").arg(reasonFor(found.error(), words_)),
            words_.text("Connect one, and see that PulseAudio or PipeWire (with pipewire-pulse) runs."));
    }
}

void Doctor::backend(DoctorReport& report, const BackendFacts& facts) const {
    if (facts.address.isEmpty()) {
        add(report, "backend", Status::failed,
            words_.text("The backend that comes with Lorvane does not start."),
            words_.text(
                "Put lorvane-backend beside lorvane, or set LORVANE_BACKEND_URL to a backend that runs."));
    } else if (!facts.isAddress) {
        add(report, "backend", Status::failed,
            words_.text("%1 is not the address of a backend; one looks like http://127.0.0.1:8080.")
                .arg(facts.address),
            words_.text("Correct LORVANE_BACKEND_URL or the preference tirra.linux.backendURL."));
    } else if (!facts.isHealthy) {
        add(report, "backend", Status::failed,
            words_.text("The backend does not answer at %1.").arg(facts.address),
            words_.text("Start it, or name another with LORVANE_BACKEND_URL; without a setting Lorvane uses "
                        "its own."));
    } else if (!facts.isRegistered) {
        add(report, "backend", Status::warning,
            words_.text("The backend answers at %1; this computer is not registered yet.").arg(facts.address),
            words_.text("Dictate once: that registers it."));
    } else {
        add(report, "backend", Status::ok,
            words_.text("The backend answers at %1 and knows this computer.").arg(facts.address));
    }
}

QCoro::Task<void> Doctor::services(DoctorReport* report, TaskScope scope) {
    if (probes_.microphone) {
        const auto found = co_await probes_.microphone(scope);
        microphone(*report, found);
    }
    if (probes_.keyStore) {
        const bool good = co_await probes_.keyStore(scope);
        add(*report, "keys-store", good ? Status::ok : Status::warning,
            good
                ? words_.text("The key store keeps this computer's identifier.")
                : words_.text("No key store answers; this computer's identifier is kept in the preferences."),
            words_.text("Start a keyring: gnome-keyring, KWallet or KeePassXC."));
    }
    if (probes_.backend) {
        const auto facts = co_await probes_.backend(scope);
        backend(*report, facts);
    }
    if (probes_.tray) {
        const bool good = co_await probes_.tray(scope);
        add(*report, "tray", good ? Status::ok : Status::warning,
            good ? words_.text("There is a tray for the icon.")
                 : words_.text("There is no tray, so the icon does not show."),
            words_.text("\"lorvane open\" does what the icon does."));
    }
}

QCoro::Task<void> Doctor::windows(DoctorReport* report, TaskScope scope) {
    if (!probes_.openWindows || !probes_.windowFields) {
        co_return;
    }
    const auto fields = co_await probes_.windowFields(scope);
    const auto open = probes_.openWindows();
    for (const auto& window : open) {
        // One process may show itself as several applications; the one with fields speaks for it.
        const WindowFields* shown = nullptr;
        for (const auto& one : fields) {
            if (one.process == window.process && (shown == nullptr || one.readable > shown->readable)) {
                shown = &one;
            }
        }
        const auto program = probes_.programOf ? probes_.programOf(window.process) : WindowProgram::unknown;
        report->windows.push_back(windowLine(window, shown, program, words_));
    }
}

} // namespace lorvane
