// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

// RFC 4648 section 4, the standard alphabet with padding. Nothing when the text is not exactly that.
std::optional<std::string> decodeBase64(std::string_view text);
std::string encodeBase64(std::string_view bytes);

} // namespace lorvane::backend
