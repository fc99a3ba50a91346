// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Upstreams.h"
#include "language/ChatServers.h"

#include <string>
#include <vector>

namespace lorvane::backend {

// "KIND URL [model=NAME] [key-file=FILE]; …", in order of preference; the first line of the file is the key.
// Throw ConfigError.
std::vector<SpeechUpstream> readSpeech(const std::string& text);
std::vector<ChatServer> readLanguage(const std::string& text);

// Throws ConfigError in the name of `key` when it cannot be read.
std::string firstLineOf(const std::string& file, const char* key);

} // namespace lorvane::backend
