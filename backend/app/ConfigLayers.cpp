// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ConfigLayers.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace lorvane::backend {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string unquoted(std::string_view value, const std::string& where) {
    if (!value.starts_with('"'))
        return std::string(value);
    std::string out;
    std::size_t i = 1;
    for (; i < value.size() && value[i] != '"'; ++i) {
        if (value[i] == '\\' && i + 1 < value.size())
            ++i;
        out += value[i];
    }
    if (i + 1 != value.size())
        throw ConfigError(where + ": the quotes do not end with the line");
    return out;
}

std::string quoted(const std::string& value) {
    std::string out = "\"";
    for (const char c : value) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + '"';
}

std::string keyOf(const CLI::Option& option) { return option.get_lnames().front(); }

bool isKey(const CLI::Option& option) { return option.get_configurable() && !option.get_lnames().empty(); }

} // namespace

std::string environmentName(std::string_view key) {
    std::string name = "LORVANE_BACKEND_";
    for (const char c : key)
        name += c == '-' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return name;
}

std::map<std::string, std::string> readConfigText(std::string_view text, const std::string& where) {
    std::map<std::string, std::string> values;
    std::istringstream in{std::string(text)};
    int number = 0;
    for (std::string whole; std::getline(in, whole);) {
        ++number;
        const auto line = trimmed(whole);
        if (line.empty() || line.front() == '#')
            continue;
        const auto at = where + ':' + std::to_string(number);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos)
            throw ConfigError(at + ": no \"key = value\"");
        const std::string key(trimmed(line.substr(0, equals)));
        std::string which = at;
        which.append(": ").append(key);
        if (!values.emplace(key, unquoted(trimmed(line.substr(equals + 1)), which)).second)
            throw ConfigError(which + " stands there a second time");
    }
    return values;
}

ConfigLayers::ConfigLayers(CLI::App& app) : app_(app) {}

void ConfigLayers::set(CLI::Option& option, const std::string& value, const std::string& source) {
    try {
        option.clear();
        option.add_result(value);
        option.run_callback();
    } catch (const CLI::Error& error) {
        throw ConfigError(source + ": " + keyOf(option) + ": " + error.what());
    }
    sources_[keyOf(option)] = source;
}

void ConfigLayers::apply(const std::filesystem::path& file) {
    std::map<std::string, std::string> values;
    if (!file.empty()) {
        std::ifstream in(file);
        std::ostringstream text;
        if (!in || !(text << in.rdbuf()))
            throw ConfigError(file.string() + ": cannot be read");
        values = readConfigText(text.str(), file.string());
    }
    for (const auto& [key, value] : values) {
        const auto* option = app_.get_option_no_throw("--" + key);
        if (!option || !isKey(*option))
            throw ConfigError(file.string() + ": " + key + ": there is no such key");
    }
    for (auto* option : app_.get_options()) {
        if (!isKey(*option))
            continue;
        const auto key = keyOf(*option);
        const char* variable = std::getenv(environmentName(key).c_str());
        if (option->count() > 0)
            sources_[key] = "command line";
        else if (variable)
            set(*option, variable, environmentName(key));
        else if (const auto found = values.find(key); found != values.end())
            set(*option, found->second, file.string());
    }
}

std::string ConfigLayers::print() const {
    std::string text;
    for (const auto* option : app_.get_options()) {
        if (!isKey(*option))
            continue;
        const auto key = keyOf(*option);
        const auto source = sources_.find(key);
        const auto value = option->count() > 0 ? option->results().front() : option->get_default_str();
        text.append("# ").append(source == sources_.end() ? "default" : source->second).append("\n");
        if (value.empty() && option->count() == 0)
            text.append("# ").append(key).append(" =\n");
        else
            text.append(key).append(" = ").append(quoted(value)).append("\n");
    }
    return text;
}

} // namespace lorvane::backend
