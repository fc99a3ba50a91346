// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/DictationStatus.h"
#include "ui/pill/DesktopComfort.h"
#include "ui/pill/PillButtons.h"
#include "ui/pill/PillContent.h"
#include "ui/pill/PillMotion.h"
#include "ui/pill/PillPainter.h"

#include <QMenu>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace lorvane {

/// What the pill asks of the dictation and what its controls do there.
struct PillCommands {
    std::function<double()> level;
    std::function<Hotkey()> hotkey;
    std::function<void()> startDictation;
    std::function<void()> stopDictation;
    std::function<void()> cancelProcessing;
    std::function<void()> hideForAnHour;
    std::function<void()> quit;
    /// Adds the program's whole menu, which quits too, to the pill's own where the desktop has no tray; false
    /// where it has. May be empty.
    std::function<bool(QMenu&)> extendMenu = {};
};

/// What the pill's window shows: the phase of the dictation, and the controls under the pointer. Tells every
/// phase to assistive technology. Main thread.
class PillView final : public QWidget {
 public:
    struct World {
        DictationStatus& status;
        DesktopComfort& comfort;
        PillLanguages languages;
        PillCommands commands;
    };

    PillView(const Foundation& foundation, World world);
    ~PillView() override;

    /// Called when the capsule's shape has changed.
    std::function<void()> onShape;
    /// Called when anything looks different, for a surface that is no window of the toolkit. May be empty.
    std::function<void()> onRedraw;
    [[nodiscard]] QRectF capsule() const { return pillLayout::capsule(motion_.size()); }
    /// Of all that is drawn.
    [[nodiscard]] QPainterPath outline() const;
    [[nodiscard]] const PillMotion& motion() const { return motion_; }
    [[nodiscard]] bool wantsLessMotion() const { return world_.comfort.wantsLessMotion(); }

    void setComposited(bool composited);
    /// Nothing moves while the pill is not on screen.
    void setShown(bool shown);

 protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

 private:
    void connectControls();
    void watchWorld();
    [[nodiscard]] bool isPointed() const;
    /// The pointer may have left without a word, as it does when the window moves away below it.
    void recheckPointer();
    void setHovering(bool hovering);
    void refresh();
    void refreshControls();
    void placeControls();
    void announce();
    void redraw();
    void touch();
    void touch(const QRect& area);
    void tap();
    void showTip(const PillButton* about);
    [[nodiscard]] QRectF tipArea() const;
    /// Positions of menus are global; each opens above its position.
    [[nodiscard]] QPoint above(const QWidget& control) const;
    void openMenu(std::unique_ptr<QMenu> menu, const QPoint& where);
    [[nodiscard]] QString label() const;
    [[nodiscard]] PillPicture picture() const;

    const Foundation foundation_;
    const World world_;
    PillColours colours_;
    PillMotion motion_;
    bool hovering_ = false;
    bool hasMenu_ = false;
    bool isPressed_ = false;
    bool isComposited_ = true;
    pillLayout::Content content_ = pillLayout::Content::restingBars;
    QRectF drawn_;
    /// The control that the tip is about.
    const PillButton* tipped_ = nullptr;
    PillButton language_;
    PillButton microphone_;
    PillButton translation_;
    PillButton cancel_;
    Handle pointerWatch_;
    std::vector<Handle> watches_;
};

} // namespace lorvane
