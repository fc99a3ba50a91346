// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Screens.h"

#include "platform/linux/x11/X11Properties.h"

#include <algorithm>

#include <xcb/randr.h>

namespace lorvane {

namespace {

using Numbers = std::vector<std::uint32_t>;

QRect wholeDisplay(X11Connection& connection) {
    const auto size =
        connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.xcb(), connection.root()));
    return size ? QRect(0, 0, size->width, size->height) : QRect();
}

std::vector<QRect> monitors(X11Connection& connection) {
    std::vector<QRect> found;
    const auto answer = connection.hasExtension(&xcb_randr_id)
                            ? connection.reply(xcb_randr_get_monitors_reply,
                                               xcb_randr_get_monitors(connection.xcb(), connection.root(), 1))
                            : nullptr;
    if (answer) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(answer.get()); it.rem > 0;
             xcb_randr_monitor_info_next(&it)) {
            const QRect frame(it.data->x, it.data->y, it.data->width, it.data->height);
            found.insert(it.data->primary != 0 ? found.begin() : found.end(), frame);
        }
    }
    if (found.empty()) {
        found.push_back(wholeDisplay(connection));
    }
    return found;
}

std::uint32_t currentDesktop(X11Connection& connection) {
    const Numbers number = windowNumbers(connection, connection.root(), "_NET_CURRENT_DESKTOP");
    return number.empty() ? 0 : number.front();
}

std::vector<QRect> rectsOf(const Numbers& numbers) {
    std::vector<QRect> rects;
    for (std::size_t i = 0; i + 3 < numbers.size(); i += 4) {
        rects.emplace_back(static_cast<int>(numbers[i]), static_cast<int>(numbers[i + 1]),
                           static_cast<int>(numbers[i + 2]), static_cast<int>(numbers[i + 3]));
    }
    return rects;
}

/// What a window reserves: left, right, top, bottom, measured from the display's edges, then the beginning
/// and end of each along its edge.
struct Strut {
    Numbers values;

    [[nodiscard]] bool reaches(std::size_t side, int from, int to) const {
        const std::size_t span = 4 + 2 * side;
        return values[side] > 0 && static_cast<int>(values[span]) <= to &&
               static_cast<int>(values[span + 1]) >= from;
    }
    [[nodiscard]] int depth(std::size_t side) const { return static_cast<int>(values[side]); }
};

// Asked for all at once and answered together: a desktop has a hundred windows, and each would be a wait.
std::vector<Strut> readStruts(X11Connection& connection) {
    constexpr std::uint32_t parts = 12;
    const xcb_atom_t name = connection.atom("_NET_WM_STRUT_PARTIAL");
    std::vector<xcb_get_property_cookie_t> cookies;
    for (const xcb_window_t window : windowNumbers(connection, connection.root(), "_NET_CLIENT_LIST")) {
        cookies.push_back(xcb_get_property(connection.xcb(), 0, window, name, XCB_ATOM_CARDINAL, 0, parts));
    }
    std::vector<Strut> struts;
    for (const auto cookie : cookies) {
        const auto answer = connection.reply(xcb_get_property_reply, cookie);
        if (answer && answer->format == 32 && answer->value_len == parts) {
            const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
            struts.push_back({Numbers(first, first + parts)});
        }
    }
    return struts;
}

QRect cut(QRect free, const QRect& monitor, const QRect& display, const Strut& strut) {
    enum Side : std::size_t { left, right, top, bottom };
    const auto within = [](int edge, int from, int to) { return edge > from && edge < to; };
    const int endX = monitor.x() + monitor.width();
    const int endY = monitor.y() + monitor.height();
    if (strut.reaches(left, monitor.y(), endY - 1) && within(strut.depth(left), monitor.x(), endX)) {
        free.setLeft(std::max(free.left(), strut.depth(left)));
    }
    if (const int edge = display.width() - strut.depth(right);
        strut.reaches(right, monitor.y(), endY - 1) && within(edge, monitor.x(), endX)) {
        free.setRight(std::min(free.right(), edge - 1));
    }
    if (strut.reaches(top, monitor.x(), endX - 1) && within(strut.depth(top), monitor.y(), endY)) {
        free.setTop(std::max(free.top(), strut.depth(top)));
    }
    if (const int edge = display.height() - strut.depth(bottom);
        strut.reaches(bottom, monitor.x(), endX - 1) && within(edge, monitor.y(), endY)) {
        free.setBottom(std::min(free.bottom(), edge - 1));
    }
    return free;
}

/// What the desktop says of the whole display and of each monitor.
struct WorkAreas {
    std::vector<QRect> ofMonitors;
    QRect ofDisplay;
};

WorkAreas readWorkAreas(X11Connection& connection) {
    const std::uint32_t desktop = currentDesktop(connection);
    const QByteArray perMonitor = "_GTK_WORKAREAS_D" + QByteArray::number(desktop);
    const auto all = rectsOf(windowNumbers(connection, connection.root(), "_NET_WORKAREA"));
    return {rectsOf(windowNumbers(connection, connection.root(), perMonitor.constData())),
            desktop < all.size() ? all[desktop] : QRect()};
}

} // namespace

std::vector<DesktopScreen> readScreens(X11Connection& connection) {
    if (!connection.isAlive()) {
        return {};
    }
    const std::vector<QRect> frames = monitors(connection);
    const WorkAreas areas = readWorkAreas(connection);
    const std::vector<Strut> struts =
        areas.ofMonitors.empty() ? readStruts(connection) : std::vector<Strut>{};
    const QRect display = wholeDisplay(connection);
    std::vector<DesktopScreen> screens;
    for (const QRect& frame : frames) {
        QRect free = frame;
        for (const QRect& area : areas.ofMonitors) {
            free = frame.contains(area) ? area : free;
        }
        for (const Strut& strut : struts) {
            free = cut(free, frame, display, strut);
        }
        if (frames.size() == 1 && areas.ofDisplay.intersects(frame)) {
            free &= areas.ofDisplay;
        }
        screens.push_back({frame, free});
    }
    return screens;
}

} // namespace lorvane
