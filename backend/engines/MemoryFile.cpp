// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/MemoryFile.h"

#include <algorithm>
#include <cstdio>
#include <new>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace lorvane::backend {

namespace {
constexpr int bufferSize = 32 * 1024;
}

MemoryFile::MemoryFile(std::string_view bytes) : bytes_(bytes) {
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (!buffer)
        throw std::bad_alloc();
    context_ = avio_alloc_context(buffer, bufferSize, 0, this, &MemoryFile::read, nullptr, &MemoryFile::seek);
    if (!context_) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

MemoryFile::~MemoryFile() {
    av_freep(&context_->buffer);
    avio_context_free(&context_);
}

int MemoryFile::read(void* self, unsigned char* out, int size) {
    auto* file = static_cast<MemoryFile*>(self);
    const auto left = file->bytes_.size() - file->position_;
    const auto count = std::min(left, static_cast<std::size_t>(std::max(size, 0)));
    if (count == 0)
        return AVERROR_EOF;
    std::copy_n(file->bytes_.data() + file->position_, count, out);
    file->position_ += count;
    return static_cast<int>(count);
}

long MemoryFile::seek(void* self, long offset, int whence) {
    auto* file = static_cast<MemoryFile*>(self);
    const auto size = static_cast<long>(file->bytes_.size());
    if (whence == AVSEEK_SIZE)
        return size;
    long from = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case SEEK_SET:
        break;
    case SEEK_CUR:
        from = static_cast<long>(file->position_);
        break;
    case SEEK_END:
        from = size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < -from || offset > size - from)
        return AVERROR(EINVAL);
    file->position_ = static_cast<std::size_t>(from + offset);
    return from + offset;
}

} // namespace lorvane::backend
