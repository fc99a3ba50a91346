// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/InputFolder.h"

#include "platform/linux/evdev/EvdevKeyTable.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

namespace lorvane {

namespace {

/// Keys that such a device makes are no keys of the user.
constexpr const char* ownDevices = "Lorvane ";

using KeyBytes = std::array<unsigned char, KEY_CNT / 8>;

EvdevKeys keysOf(const KeyBytes& bytes) {
    EvdevKeys keys;
    for (std::size_t key = 0; key < keys.size(); ++key) {
        keys[key] = (bytes[key / 8] >> (key % 8) & 1U) != 0;
    }
    return keys;
}

class EvdevDevice final : public KeyDevice {
 public:
    explicit EvdevDevice(int descriptor) : descriptor_(descriptor) {
        int clock = CLOCK_MONOTONIC;
        tellsSteadyTime_ = ioctl(descriptor_, EVIOCSCLOCKID, &clock) == 0;
    }
    EvdevDevice(const EvdevDevice&) = delete;
    EvdevDevice& operator=(const EvdevDevice&) = delete;
    ~EvdevDevice() override { close(descriptor_); }

    [[nodiscard]] int descriptor() const override { return descriptor_; }
    [[nodiscard]] bool tellsSteadyTime() const override { return tellsSteadyTime_; }
    [[nodiscard]] std::optional<EvdevKeys> keysDown() const override {
        KeyBytes bytes{};
        if (ioctl(descriptor_, EVIOCGKEY(bytes.size()), bytes.data()) < 0) {
            return std::nullopt;
        }
        return keysOf(bytes);
    }

    [[nodiscard]] bool isOfUse() const {
        KeyBytes bytes{};
        if (ioctl(descriptor_, EVIOCGBIT(EV_KEY, bytes.size()), bytes.data()) < 0) {
            return false;
        }
        std::array<char, 256> name{};
        const bool named = ioctl(descriptor_, EVIOCGNAME(name.size() - 1), name.data()) >= 0;
        const bool ours = named && std::strncmp(name.data(), ownDevices, std::strlen(ownDevices)) == 0;
        return !ours && isKeyboard(keysOf(bytes));
    }

 private:
    int descriptor_;
    bool tellsSteadyTime_ = false;
};

} // namespace

InputFolder::InputFolder(QString folder)
    : folder_(std::move(folder)), changes_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    // A device appears before its permissions are set.
    const std::uint32_t wanted = IN_CREATE | IN_DELETE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO;
    if (changes_ >= 0 && inotify_add_watch(changes_, QFile::encodeName(folder_).constData(), wanted) >= 0) {
        changesWatch_ = std::make_unique<QSocketNotifier>(changes_, QSocketNotifier::Read);
        QObject::connect(changesWatch_.get(), &QSocketNotifier::activated, changesWatch_.get(),
                         [this] { readChanges(); });
    }
}

InputFolder::~InputFolder() {
    changesWatch_.reset();
    if (changes_ >= 0) {
        close(changes_);
    }
}

KeyDevices::Access InputFolder::access() const {
    bool refused = false;
    for (const QString& name : names()) {
        if (open(name)) {
            return Access::granted;
        }
        refused = refused || ::access(QFile::encodeName(folder_ + u'/' + name).constData(), R_OK) != 0;
    }
    return refused ? Access::refused : Access::none;
}

std::vector<QString> InputFolder::names() const {
    const QStringList found =
        QDir(folder_).entryList({QStringLiteral("event*")}, QDir::System | QDir::Files, QDir::Name);
    return {found.begin(), found.end()};
}

std::unique_ptr<KeyDevice> InputFolder::open(const QString& name) const {
    const int descriptor = ::open(QFile::encodeName(folder_ + u'/' + name).constData(),
                                  O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        return nullptr;
    }
    auto device = std::make_unique<EvdevDevice>(descriptor);
    return device->isOfUse() ? std::move(device) : nullptr;
}

void InputFolder::readChanges() {
    std::array<char, 4096> buffer;
    while (read(changes_, buffer.data(), buffer.size()) > 0) {
    }
    changed_.emit();
}

} // namespace lorvane
