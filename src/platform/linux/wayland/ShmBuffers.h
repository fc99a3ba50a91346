// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wayland/WaylandConnection.h"

#include <QImage>

#include <array>
#include <functional>

namespace lorvane {

/// Two pictures in memory shared with the compositor, so that one can be drawn while the other is shown. Main
/// thread.
class ShmBuffers {
 public:
    /// Pixels. `hasFree` stays false when the memory cannot be had.
    ShmBuffers(wl_shm* shm, QSize size);
    ~ShmBuffers();
    ShmBuffers(const ShmBuffers&) = delete;
    ShmBuffers& operator=(const ShmBuffers&) = delete;

    [[nodiscard]] QSize size() const { return size_; }
    /// Called when the compositor has done with one.
    std::function<void()> onFree;
    [[nodiscard]] bool hasFree() const;
    /// Draws by `draw` into a free one, see-through before, and shows it on the surface.
    void present(wl_surface* surface, int scale, const std::function<void(QImage&)>& draw);

 private:
    struct Buffer {
        ShmBuffers* owner = nullptr;
        wl_buffer* proxy = nullptr;
        QImage image;
        bool isBusy = false;
    };
    static const wl_buffer_listener listener;

    QSize size_;
    void* memory_ = nullptr;
    std::size_t bytes_ = 0;
    std::array<Buffer, 2> buffers_;
};

} // namespace lorvane
