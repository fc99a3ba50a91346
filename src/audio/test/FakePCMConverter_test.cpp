// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/testing/FakePCMConverter.h"
#include "audio/testing/PCMConverterContract.h"

namespace lorvane {

namespace {

struct MakeFake {
    FakeAudioEngineFactory factory;
    std::unique_ptr<PCMConverter> operator()(const InputFormat& format) {
        return factory.makeConverter(format);
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PCMConverterContract, MakeFake);

} // namespace

} // namespace lorvane
