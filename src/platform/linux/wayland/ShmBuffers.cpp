// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wayland/ShmBuffers.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>

namespace lorvane {

const wl_buffer_listener ShmBuffers::listener{[](void* data, wl_buffer*) {
    auto& buffer = *static_cast<Buffer*>(data);
    buffer.isBusy = false;
    if (buffer.owner->onFree) {
        buffer.owner->onFree();
    }
}};

ShmBuffers::ShmBuffers(wl_shm* shm, QSize size) : size_(size) {
    const int stride = size.width() * 4;
    const int picture = stride * size.height();
    bytes_ = buffers_.size() * static_cast<std::size_t>(picture);
    const int file = memfd_create("lorvane-pill", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, static_cast<off_t>(bytes_)) != 0) {
        close(file);
        return;
    }
    void* const memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        close(file);
        return;
    }
    memory_ = memory;
    wl_shm_pool* const pool = wl_shm_create_pool(shm, file, static_cast<std::int32_t>(bytes_));
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
        const int offset = static_cast<int>(i) * picture;
        Buffer& buffer = buffers_.at(i);
        buffer.owner = this;
        buffer.proxy = wl_shm_pool_create_buffer(pool, offset, size.width(), size.height(), stride,
                                                 WL_SHM_FORMAT_ARGB8888);
        buffer.image = QImage(static_cast<uchar*>(memory) + offset, size.width(), size.height(), stride,
                              QImage::Format_ARGB32_Premultiplied);
        wl_buffer_add_listener(buffer.proxy, &listener, &buffer);
    }
    wl_shm_pool_destroy(pool);
    close(file);
}

ShmBuffers::~ShmBuffers() {
    for (Buffer& buffer : buffers_) {
        if (buffer.proxy != nullptr) {
            wl_buffer_destroy(buffer.proxy);
        }
    }
    if (memory_ != nullptr) {
        munmap(memory_, bytes_);
    }
}

bool ShmBuffers::hasFree() const {
    return std::any_of(buffers_.begin(), buffers_.end(),
                       [](const Buffer& one) { return one.proxy != nullptr && !one.isBusy; });
}

void ShmBuffers::present(wl_surface* surface, int scale, const std::function<void(QImage&)>& draw) {
    const auto free = std::find_if(buffers_.begin(), buffers_.end(),
                                   [](const Buffer& one) { return one.proxy != nullptr && !one.isBusy; });
    if (free == buffers_.end()) {
        return;
    }
    free->image.setDevicePixelRatio(1);
    free->image.fill(Qt::transparent);
    free->image.setDevicePixelRatio(scale);
    draw(free->image);
    free->isBusy = true;
    wl_surface_set_buffer_scale(surface, scale);
    wl_surface_attach(surface, free->proxy, 0, 0);
    wl_surface_damage_buffer(surface, 0, 0, size_.width(), size_.height());
    wl_surface_commit(surface);
}

} // namespace lorvane
