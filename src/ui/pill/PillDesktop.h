// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <QPoint>
#include <QRect>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lorvane {

/// A monitor. Pixels of the display, y downwards; QRect's right() and bottom() are one less than its edges.
struct DesktopScreen {
    QRect frame;
    /// What the desktop's panels leave free of it.
    QRect visibleFrame;
    friend bool operator==(const DesktopScreen&, const DesktopScreen&) = default;
};

/// A window as the window manager stacks it.
struct DesktopWindow {
    std::uint32_t id = 0;
    /// With its decoration, without its shadow.
    QRect bounds;
    /// One among the others: neither the desktop, nor a panel, nor kept above all.
    bool isOrdinary = true;
    friend bool operator==(const DesktopWindow&, const DesktopWindow&) = default;
};

enum class DesktopChange { activeWindow, workspace, screens };

/// What the pill needs to know of the desktop to find its place. Main thread; nothing here waits for another
/// program.
class PillDesktop {
 public:
    virtual ~PillDesktop() = default;

    [[nodiscard]] virtual QPoint pointer() = 0;
    /// The main one first; empty when nobody knows.
    [[nodiscard]] virtual std::vector<DesktopScreen> screens() = 0;
    /// What is on screen now, lowest first; absent when the list cannot be read.
    [[nodiscard]] virtual std::optional<std::vector<DesktopWindow>> windows() = 0;
    /// Whether this process made the window.
    [[nodiscard]] virtual bool isOwn(const DesktopWindow& window) = 0;
    [[nodiscard]] virtual Handle onChange(std::function<void(DesktopChange)> observer) = 0;
};

/// What a floating window needs of the display and Qt does not offer. Main thread.
class PillSurface {
 public:
    virtual ~PillSurface() = default;

    /// Whether see-through parts of a window show what lies below; they are black otherwise.
    [[nodiscard]] virtual bool isComposited() const = 0;
    [[nodiscard]] virtual Handle onCompositedChange(std::function<void()> observer) = 0;
    /// Clicks and scrolls elsewhere in the window go to what lies below it. Pixels of the window.
    virtual void acceptInputOnlyIn(std::uint32_t window, const QRect& area) = 0;
};

} // namespace lorvane
