// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>

namespace lorvane::backend {

class StorageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// The store itself cannot be reached; later it may be.
class StorageAway : public StorageError {
 public:
    using StorageError::StorageError;
};

} // namespace lorvane::backend
