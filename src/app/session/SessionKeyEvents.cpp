// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionKeyEvents.h"

#include "input/HoldKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

namespace lorvane {

namespace {

std::uint32_t flagsOf(Qt::KeyboardModifiers modifiers) {
    std::uint32_t flags = 0;
    flags |= modifiers.testFlag(Qt::ShiftModifier) ? modifierFlag::shift : 0;
    flags |= modifiers.testFlag(Qt::ControlModifier) ? modifierFlag::control : 0;
    flags |= modifiers.testFlag(Qt::AltModifier) ? modifierFlag::option : 0;
    flags |= modifiers.testFlag(Qt::MetaModifier) ? modifierFlag::command : 0;
    return flags;
}

bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_CapsLock:
        return true;
    default:
        return false;
    }
}

int codeOf(const QKeyEvent& event) {
    return event.key() == Qt::Key_Escape ? keyCode::escape
                                         : firstOtherKeyCode + static_cast<int>(event.nativeScanCode());
}

bool isOwnWindowFocused() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
           QGuiApplication::focusWindow() != nullptr;
}

} // namespace

SessionKeyEvents::SessionKeyEvents(const Foundation& foundation, std::vector<HoldRoad*> roads)
    : clock_(foundation.clock), roads_(foundation, std::move(roads), isOwnWindowFocused) {}

Handle SessionKeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return roads_.addGlobalMonitor(kind, std::move(observer));
}

Handle SessionKeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    if (kind != KeyEventKind::keyDown) {
        return roads_.addLocalMonitor(kind, std::move(observer));
    }
    auto both = std::make_shared<std::pair<Handle, Handle>>(roads_.addLocalMonitor(kind, observer),
                                                            own_.addLocal(kind, observer));
    return Handle([both] {
        both->first.reset();
        both->second.reset();
    });
}

// At the window, before any control of it: a control may take Escape for itself.
bool SessionKeyEvents::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || qobject_cast<QWindow*>(watched) == nullptr) {
        return false;
    }
    const auto& press = *static_cast<QKeyEvent*>(event);
    if (press.isAutoRepeat() || isModifier(press.key())) {
        return false;
    }
    const KeyEvent told{KeyEventKind::keyDown, codeOf(press), flagsOf(press.modifiers()), clock_.now()};
    return own_.deliver(told, true);
}

} // namespace lorvane
