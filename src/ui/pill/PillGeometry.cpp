// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace lorvane::pillGeometry {

namespace {

constexpr double grace = 2;
constexpr double leastHeight = 200;

int bottomEdge(const QRect& rect) { return rect.y() + rect.height(); }

} // namespace

std::optional<DesktopScreen> screenFor(QPoint pointer, const std::vector<DesktopScreen>& screens) {
    if (screens.empty()) {
        return std::nullopt;
    }
    const auto under = std::find_if(screens.begin(), screens.end(), [pointer](const DesktopScreen& screen) {
        return screen.frame.contains(pointer);
    });
    return under != screens.end() ? *under : screens.front();
}

bool reachesBottom(const DesktopWindow& window, const QRect& screenFrame, double scale) {
    return window.isOrdinary && window.bounds.width() >= screenFrame.width() - grace * scale &&
           window.bounds.height() > leastHeight * scale &&
           bottomEdge(window.bounds) >= bottomEdge(screenFrame) - grace * scale;
}

bool isCovered(const QRect& screenFrame, double scale,
               const std::optional<std::vector<DesktopWindow>>& windows,
               const std::function<bool(const DesktopWindow&)>& isOwn) {
    return windows && std::any_of(windows->begin(), windows->end(), [&](const DesktopWindow& window) {
               return reachesBottom(window, screenFrame, scale) && !isOwn(window);
           });
}

QRect panelRect(const DesktopScreen& screen, bool covered, double scale) {
    const QRect& base = covered ? screen.frame : screen.visibleFrame;
    const double middle = (screen.frame.x() + screen.frame.width() * 0.5) / scale;
    const int x = rounded(rounded(middle - panelWidth * 0.5) * scale);
    const int width = rounded(panelWidth * scale);
    const int height = rounded(panelHeight * scale);
    return {x, bottomEdge(base) + rounded(overhang * scale) - height, width, height};
}

bool isWorthMoving(QPoint from, QPoint to, double scale) {
    return std::abs(from.x() - to.x()) > scale || std::abs(from.y() - to.y()) > scale;
}

int rounded(double value) { return static_cast<int>(std::lround(value)); }

} // namespace lorvane::pillGeometry
