// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace lorvane::backend::testing {

// An empty store, whose clock stands at noon and can be moved on.
class StorageWorld {
 public:
    virtual ~StorageWorld() = default;
    virtual Storage& storage() = 0;
    virtual void advance(std::chrono::milliseconds time) = 0;
};

struct StorageKind {
    std::string name;
    std::function<std::unique_ptr<StorageWorld>()> make;
};

// What every store does alike.
class StorageContract : public ::testing::TestWithParam<StorageKind> {
 protected:
    DeviceId device(const std::string& name) {
        return storage_.registerDevice(name, sha256("token " + name));
    }
    Joined join(DeviceId device, const std::string& other) {
        return storage_.joinDevices(device, sha256("token " + other));
    }

    const std::unique_ptr<StorageWorld> world_ = GetParam().make();
    Storage& storage_ = world_->storage();
};

inline std::string nameOfKind(const ::testing::TestParamInfo<StorageKind>& info) { return info.param.name; }

} // namespace lorvane::backend::testing
