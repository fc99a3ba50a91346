// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/BackendUnderTest.h"

#include <algorithm>
#include <boost/json.hpp>
#include <sstream>

namespace lorvane::backend::testing {

std::string member(const std::string& json, const std::string& name) {
    boost::system::error_code error;
    const auto value = boost::json::parse(json, error);
    if (error || !value.is_object())
        return {};
    const auto* entry = value.as_object().if_contains(name);
    return entry && entry->is_string() ? std::string(entry->as_string()) : std::string();
}

std::vector<std::string> BackendUnderTest::letters() const {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "mail"))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<std::string> letters;
    for (const auto& file : files)
        letters.push_back(readFile(file));
    return letters;
}

StreamedTake readStream(const std::string& body) {
    StreamedTake take;
    std::istringstream in(body);
    for (std::string line; std::getline(in, line);) {
        const auto type = member(line, "type");
        if (type == "delta")
            take.deltas.push_back(member(line, "text"));
        if (type == "done") {
            take.done = member(line, "text");
            take.raw = member(line, "raw");
        }
        if (type == "error")
            take.error = member(line, "error");
    }
    return take;
}

} // namespace lorvane::backend::testing
