// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lorvane::backend {

// What became of a take.
struct Dictated {
    std::string text;
    std::string raw;      // before any clean-up
    std::string original; // before the translation; empty when there was none
    std::string category; // a label; empty when none fits
};

} // namespace lorvane::backend
