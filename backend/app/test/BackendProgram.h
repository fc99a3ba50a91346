// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testing/Program.h"

#include <functional>
#include <string>
#include <vector>

namespace lorvane::backend::testing {

// The backend, as a process.
class BackendProgram : public Program {
 public:
    BackendProgram(const TemporaryFolder& folder, const std::vector<std::string>& arguments,
                   const std::string& name = "run", const std::function<void()>& prepare = {})
        : Program(folder, LORVANE_BACKEND_PROGRAM, arguments, name, prepare) {}
};

} // namespace lorvane::backend::testing
