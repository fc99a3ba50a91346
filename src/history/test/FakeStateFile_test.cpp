// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/testing/FakeStateFile.h"
#include "history/testing/StateFileContract.h"

namespace lorvane {

namespace {

class FakeWorld {
 public:
    StateFile& file() { return file_; }
    StateFile& again() { return file_; }
    std::vector<QByteArray> setAside() {
        std::vector<QByteArray> contents;
        for (const auto& content : file_.setAside()) {
            contents.push_back(std::get<QByteArray>(content));
        }
        return contents;
    }

 private:
    FakeStateFile file_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, StateFileContract, FakeWorld);

} // namespace

} // namespace lorvane
