// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace lorvane::backend {

// Says where and which key, then what is wrong.
class ConfigError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Lines of `key = value`; the value may stand in double quotes, with \" and \\ in them. "#" at the start of a
// line begins a comment. A key comes once.
std::map<std::string, std::string> readConfigText(std::string_view text, const std::string& where);

// Gives the options that the command line left open what the environment (LORVANE_BACKEND_ and the name in
// capitals) or else the file says. Options are checked as those of the command line are.
class ConfigLayers {
 public:
    explicit ConfigLayers(CLI::App& app);
    // An empty path: no file. Throws ConfigError.
    void apply(const std::filesystem::path& file);
    // A file that means the same, with each key's source above it.
    std::string print() const;

 private:
    void set(CLI::Option& option, const std::string& value, const std::string& source);

    CLI::App& app_;
    std::map<std::string, std::string> sources_; // by key
};

std::string environmentName(std::string_view key);

} // namespace lorvane::backend
