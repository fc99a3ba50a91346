// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Wait.h"

#include <QtCore/QJsonObject>
#include <QtCore/QPoint>
#include <QtCore/QProcess>
#include <QtCore/QRect>

#include <memory>
#include <optional>

#include <xcb/xcb.h>

namespace lorvane {

// The pill as a process of its own, shown and at rest when it is handed out.
class PillStage {
 public:
    explicit PillStage(const QStringList& environment = {});
    ~PillStage();
    PillStage(const PillStage&) = delete;
    PillStage& operator=(const PillStage&) = delete;

    qint64 pid() const { return process_.processId(); }
    void tell(const QString& line);
    QJsonObject state();
    quint32 window() { return static_cast<quint32>(state()["window"].toInteger()); }
    // The window's place in pixels.
    QPoint place();
    // The capsule's size once it has come to rest with this width; what it was last otherwise.
    double waitForWidth(double width);
    // Whether the program has said this line since it was asked last.
    bool waitForWord(const QString& line);
    bool hasSaid(const QString& line);

 private:
    void listen();
    QProcess process_;
    QByteArray pending_;
    QStringList said_;
    QList<QJsonObject> states_;
};

// A user's hand on the mouse.
namespace mouse {
void moveTo(QPoint pixels);
void click(int button = 1);
} // namespace mouse

// Pixels of the screen.
class Picture {
 public:
    explicit Picture(const QRect& area);
    // Red, green and blue, from the area's corner.
    std::array<int, 3> at(int x, int y) const;
    // How far the pixels that differ from the colour at the row's left end go in it.
    int extent(int row) const;
    bool hasNear(const std::array<int, 3>& colour, int tolerance) const;
    friend bool operator==(const Picture&, const Picture&) = default;

 private:
    QRect area_;
    QByteArray bytes_;
};

// A window of another program: plain white, and it counts what is clicked and scrolled on it.
class OtherWindow {
 public:
    enum class Kind { ordinary, fullScreen, panel };
    OtherWindow(const QRect& place, Kind kind);
    ~OtherWindow();
    OtherWindow(const OtherWindow&) = delete;
    OtherWindow& operator=(const OtherWindow&) = delete;
    int presses(int button);
    quint32 id() const { return window_; }
    QRect place() const;

 private:
    void setAtoms(const char* name, const char* value);
    void setNumbers(const char* name, const QList<quint32>& values);
    xcb_connection_t* xcb_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    QList<int> pressed_;
};

// The display's own knowledge.
namespace display {
quint32 focus();
// Empty when the window has no shape of this kind.
QList<QRect> inputShape(quint32 window);
bool isCutOut(quint32 window);
bool isShown(quint32 window);
// The place of the pill's menu that is open, the window in front; empty while none is.
QRect openMenu();
QByteArray rootProperty(const QString& name);
} // namespace display

} // namespace lorvane
