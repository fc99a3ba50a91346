// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/evdev/EvdevKeyTable.h"
#include "platform/linux/evdev/KeyDevices.h"

#include <linux/input.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QByteArray>

#include <array>
#include <map>
#include <memory>

namespace lorvane {

/// One event as the kernel writes it.
inline QByteArray eventBytes(int type, int code, int value, Instant time = {}) {
    input_event event{};
    const auto sinceStart = time.time_since_epoch();
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(sinceStart);
    event.input_event_sec = whole.count();
    event.input_event_usec =
        std::chrono::duration_cast<std::chrono::microseconds>(sinceStart - whole).count();
    event.type = static_cast<std::uint16_t>(type);
    event.code = static_cast<std::uint16_t>(code);
    event.value = value;
    return {reinterpret_cast<const char*>(&event), sizeof event};
}

/// Keyboards whose events come over sockets.
class FakeKeyDevices final : public KeyDevices {
 public:
    struct Board {
        /// What the test writes to, and what the reader gets.
        std::array<int, 2> ends{-1, -1};
        std::optional<EvdevKeys> down = EvdevKeys();
        bool tellsSteadyTime = true;
        int opened = 0;
        int openNow = 0;
    };

    FakeKeyDevices() = default;
    FakeKeyDevices(const FakeKeyDevices&) = delete;
    FakeKeyDevices& operator=(const FakeKeyDevices&) = delete;
    ~FakeKeyDevices() override {
        for (auto& [name, board] : boards_) {
            close(board->ends[0]);
            close(board->ends[1]);
        }
    }

    [[nodiscard]] Access access() const override {
        return boards_.empty() ? Access::none : (readable ? Access::granted : Access::refused);
    }
    [[nodiscard]] std::vector<QString> names() const override {
        std::vector<QString> all;
        for (const auto& [name, board] : boards_) {
            all.push_back(name);
        }
        return all;
    }
    [[nodiscard]] std::unique_ptr<KeyDevice> open(const QString& name) const override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

    Board& plugIn(const QString& name) {
        const auto board = std::make_shared<Board>();
        (void)socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, board->ends.data());
        boards_[name] = board;
        changed_.emit();
        return *board;
    }
    void unplug(const QString& name) {
        const auto board = boards_.extract(name).mapped();
        board->down.reset();
        close(board->ends[0]);
        gone_.push_back(board);
        changed_.emit();
    }
    void setReadable(bool may) {
        readable = may;
        changed_.emit();
    }
    void write(const QString& name, const QByteArray& bytes) const {
        const auto count = ::write(boards_.at(name)->ends[0], bytes.constData(), bytes.size());
        if (count != bytes.size()) {
            abort();
        }
    }
    [[nodiscard]] Board& board(const QString& name) { return *boards_.at(name); }

    bool readable = true;

 private:
    std::map<QString, std::shared_ptr<Board>> boards_;
    std::vector<std::shared_ptr<Board>> gone_;
    Signal<> changed_;
};

class FakeKeyDevice final : public KeyDevice {
 public:
    explicit FakeKeyDevice(std::shared_ptr<FakeKeyDevices::Board> board) : board_(std::move(board)) {
        ++board_->opened;
        ++board_->openNow;
    }
    FakeKeyDevice(const FakeKeyDevice&) = delete;
    FakeKeyDevice& operator=(const FakeKeyDevice&) = delete;
    ~FakeKeyDevice() override { --board_->openNow; }
    [[nodiscard]] int descriptor() const override { return board_->ends[1]; }
    [[nodiscard]] bool tellsSteadyTime() const override { return board_->tellsSteadyTime; }
    [[nodiscard]] std::optional<EvdevKeys> keysDown() const override { return board_->down; }

 private:
    std::shared_ptr<FakeKeyDevices::Board> board_;
};

inline std::unique_ptr<KeyDevice> FakeKeyDevices::open(const QString& name) const {
    const auto found = boards_.find(name);
    if (found == boards_.end() || !readable) {
        return nullptr;
    }
    return std::make_unique<FakeKeyDevice>(found->second);
}

} // namespace lorvane
