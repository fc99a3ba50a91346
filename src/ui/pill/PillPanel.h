// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/pill/PillHost.h"
#include "ui/pill/PillPlacement.h"

#include <QWidget>

#include <memory>

namespace lorvane {

/// The pill's window: without a frame, above everything, also what fills the screen, on every workspace, in
/// no task bar, and never with the focus. Made once at the start and kept. Main thread.
class PillPanel final : public QWidget, public PillHost {
 public:
    PillPanel(Clock& clock, PillDesktop& desktop, PillSurface& surface);
    ~PillPanel() override;

    void host(std::unique_ptr<PillView> view) override;

    void show() override;
    void orderOut() override;
    void reposition(bool animated) { placement_.reposition(animated); }

 protected:
    bool event(QEvent* event) override;

 private:
    void moveTo(const QRect& place, bool animated);
    void put(const QRect& place);
    void glide();
    void stayInFront();
    void shapeInput();
    void shapeWindow();

    Clock& clock_;
    PillSurface& surface_;
    std::unique_ptr<PillView> view_;
    Spring x_;
    Spring y_;
    QSize size_;
    Instant lastStep_{};
    Handle gliding_;
    Handle stacking_;
    Handle compositing_;
    PillPlacement placement_;
};

} // namespace lorvane
