// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace lorvane::backend::testing {

class TemporaryFolder {
 public:
    TemporaryFolder() {
        auto name = (std::filesystem::temp_directory_path() / "lorvane-backend-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
    std::filesystem::path path_;
};

inline std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

inline void put(const std::filesystem::path& file, const std::string& text) { std::ofstream(file) << text; }

} // namespace lorvane::backend::testing
