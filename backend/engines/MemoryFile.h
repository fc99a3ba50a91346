// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

struct AVIOContext;

namespace lorvane::backend {

// Lets libavformat read and seek in bytes that are already in memory. The bytes must outlive it.
class MemoryFile {
 public:
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    AVIOContext* context() const { return context_; }

 private:
    static int read(void* self, unsigned char* out, int size);
    static long seek(void* self, long offset, int whence);

    std::string_view bytes_;
    std::size_t position_ = 0;
    AVIOContext* context_ = nullptr;
};

} // namespace lorvane::backend
