// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/QuietMenu.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace lorvane::quietMenu {

namespace {

constexpr int distance = 6;

const auto look =
    QStringLiteral("QMenu { background: #1f1a13; color: #f4efe6; border: 1px solid #4a4439; border-radius: "
                   "%1px; padding: 4px; }"
                   "QMenu::item { padding: 5px 22px 5px 26px; border-radius: 6px; background: transparent; }"
                   "QMenu::item:selected { background: #3b3429; }"
                   "QMenu::item:disabled { color: #9a9285; }"
                   "QMenu::indicator { width: 6px; height: 6px; left: 9px; border-radius: 3px; }"
                   "QMenu::indicator:checked { background: #e8836d; }"
                   "QMenu::separator { height: 1px; background: #3b3429; margin: 4px 8px; }");

/// Holds the pointer for a menu while it is on screen and gives it back to the one that opened it.
class PointerHold final : public QObject {
 public:
    explicit PointerHold(QMenu& menu) : QObject(&menu), menu_(menu) { menu.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            // The server grabs for windows that it has mapped, which comes after this event.
            QMetaObject::invokeMethod(
                this, [this] { take(); }, Qt::QueuedConnection);
        } else if (event->type() == QEvent::Hide) {
            menu_.releaseMouse();
            auto* const opener = openerOf(menu_);
            if (opener != nullptr && opener->isVisible()) {
                opener->grabMouse();
            }
        }
        return QObject::eventFilter(watched, event);
    }

 private:
    static QMenu* openerOf(QMenu& menu) { return qobject_cast<QMenu*>(menu.parentWidget()); }
    void take() {
        if (menu_.isVisible()) {
            menu_.grabMouse();
        }
    }

    QMenu& menu_;
};

QPoint placeAbove(const QMenu& menu, const QPoint& above) {
    const QScreen* const screen = QGuiApplication::screenAt(above);
    const QSize size = menu.sizeHint();
    QPoint corner(above.x() - size.width() / 2, above.y() - distance - size.height());
    if (screen != nullptr) {
        const QRect room = screen->geometry();
        corner.setX(
            std::clamp(corner.x(), room.left(), std::max(room.left(), room.right() + 1 - size.width())));
        corner.setY(std::max(corner.y(), room.top()));
    }
    return corner;
}

} // namespace

void prepare(QMenu& menu, bool isSeeThrough) {
    menu.setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                        Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint);
    menu.setAttribute(Qt::WA_ShowWithoutActivating);
    menu.setAttribute(Qt::WA_X11DoNotAcceptFocus);
    menu.setAttribute(Qt::WA_TranslucentBackground, isSeeThrough);
    menu.setStyleSheet(look.arg(isSeeThrough ? 8 : 0));
    new PointerHold(menu);
    for (const QAction* const action : menu.actions()) {
        if (action->menu() != nullptr) {
            prepare(*action->menu(), isSeeThrough);
        }
    }
}

void open(QMenu* menu, const QPoint& above, std::function<void()> closed) {
    QObject::connect(menu, &QMenu::aboutToHide, menu, [menu, closed = std::move(closed)] {
        closed();
        menu->deleteLater();
    });
    // A menu closes by itself only when it holds the keyboard.
    QObject::connect(menu, &QMenu::triggered, menu, [menu] {
        for (QMenu* const submenu : menu->findChildren<QMenu*>()) {
            submenu->close();
        }
        menu->close();
    });
    menu->ensurePolished();
    menu->popup(placeAbove(*menu, above));
}

} // namespace lorvane::quietMenu
