// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/ServerUnderTest.h"

#include <fstream>
#include <unistd.h>

namespace lorvane::backend::testing {

std::size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace lorvane::backend::testing
