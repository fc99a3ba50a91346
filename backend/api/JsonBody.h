// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace boost::json {
class object;
}

namespace lorvane::backend {

class BoundedJson;

// Names the key at fault, and never its content.
class BadBody : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// A request's body as a JSON object in UTF-8. All of it throws BadBody when something is not as asked for;
// keys that nobody asks for do not matter.
class JsonBody {
 public:
    explicit JsonBody(std::string_view body);
    ~JsonBody();
    JsonBody(const JsonBody&) = delete;
    JsonBody& operator=(const JsonBody&) = delete;

    // `most` and `mostEntries`: more than so many bytes, or entries, are refused.
    std::string text(std::string_view key, std::size_t most) const;
    std::optional<std::string> optionalText(std::string_view key, std::size_t most) const;
    std::vector<std::string> texts(std::string_view key, std::size_t mostEntries) const;
    // Empty when the key is absent.
    std::map<std::string, std::string> textMap(std::string_view key, std::size_t mostEntries) const;

 private:
    const std::unique_ptr<BoundedJson> json_;
    const boost::json::object* const object_;
};

} // namespace lorvane::backend
