// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tl/expected.hpp>

namespace lorvane {

/// An expected failure is a value.
template <typename T, typename E>
using Result = tl::expected<T, E>;

template <typename E>
[[nodiscard]] auto failure(E error) {
    return tl::unexpected<E>(std::move(error));
}

} // namespace lorvane
