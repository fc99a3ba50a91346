// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

extern "C" {
#include <libavutil/error.h>
}

#include <stdexcept>
#include <string>

namespace lorvane {

/// A call of the libav libraries that failed, in their words. Never leaves this folder.
class AvError : public std::runtime_error {
 public:
    explicit AvError(const std::string& what) : std::runtime_error(what) {}
    explicit AvError(int code) : std::runtime_error(wordsOf(code)) {}

 private:
    static std::string wordsOf(int code) {
        char words[AV_ERROR_MAX_STRING_SIZE] = {};
        av_strerror(code, words, sizeof words);
        return words;
    }
};

/// The result of a call, or AvError.
inline int avCheck(int result) {
    if (result < 0) {
        throw AvError(result);
    }
    return result;
}

template <typename T>
T* avCheck(T* made) {
    if (made == nullptr) {
        throw AvError(AVERROR(ENOMEM));
    }
    return made;
}

} // namespace lorvane
