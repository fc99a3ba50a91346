// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"
#include "util/Log.h"
#include "util/WakeSlot.h"

#include <exception>
#include <mutex>
#include <optional>
#include <string>

namespace lorvane::backend {

// One look-up of a token, shared by the connection that waits for it and the worker that does it, who may
// come when the connection is gone.
class TokenCall {
 public:
    enum class Answer { none, known, unknown, failed };

    void run(const Authenticator& authenticate, const std::string& token) {
        auto answer = Answer::failed;
        std::optional<DeviceId> device;
        try {
            device = authenticate(token);
            answer = device ? Answer::known : Answer::unknown;
        } catch (const std::exception& error) {
            logLine(std::string("the token store failed: ") + error.what());
        }
        {
            const std::lock_guard lock(mutex_);
            answer_ = answer;
            device_ = device.value_or(0);
        }
        slot_.wake();
    }

    // The device is set when the answer is `known`.
    Answer answer(DeviceId& device) const {
        const std::lock_guard lock(mutex_);
        device = device_;
        return answer_;
    }
    WakeSlot& slot() { return slot_; }

 private:
    WakeSlot slot_;
    mutable std::mutex mutex_;
    Answer answer_ = Answer::none;
    DeviceId device_ = 0;
};

} // namespace lorvane::backend
