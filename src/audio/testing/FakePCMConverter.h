// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/testing/FakeAudioEngine.h"

namespace lorvane {

/// Takes the nearest sample of the first channel: right in length, not in sound.
class FakePCMConverter final : public PCMConverter {
 public:
    FakePCMConverter(const InputFormat& format, std::shared_ptr<FakeAudioSystem> system,
                     std::shared_ptr<std::vector<std::size_t>> capacities);
    [[nodiscard]] std::optional<QByteArray> convert(const InputBuffer& buffer, std::size_t capacity) override;

 private:
    InputFormat format_;
    std::shared_ptr<FakeAudioSystem> system_;
    std::shared_ptr<std::vector<std::size_t>> capacities_;
    std::uint64_t heard_ = 0;
    std::uint64_t given_ = 0;
};

} // namespace lorvane
