// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace lorvane::backend {

struct ReleaseOptions {
    std::filesystem::path folder; // empty: no feed
    std::string url;              // under which the folder's files are downloaded, without a slash at its end
    std::string publicKey;        // 32 bytes of Ed25519
};

// The feed that updaters of the Sparkle family read, made of a folder: NAME-VERSION.EXT, beside it
// NAME-VERSION.EXT.sig with the Ed25519 signature over the file's bytes in base64, and, if there is one,
// NAME-VERSION.EXT.html with what is new. A file whose signature does not verify is left out. Any thread.
class ReleaseFeed {
 public:
    explicit ReleaseFeed(ReleaseOptions options);
    // The newest release first; nothing when there is none.
    std::optional<std::string> xml() const;

 private:
    struct Release {
        std::filesystem::path file;
        std::vector<unsigned long> version;
        std::string versionText;
        std::string signature; // base64
        std::uintmax_t size = 0;
        std::filesystem::file_time_type written;
    };
    struct Seen {
        std::uintmax_t size;
        std::filesystem::file_time_type written;
        std::string signature;
        bool good;
    };
    std::optional<Release> releaseOf(const std::filesystem::path& file) const;
    bool verified(const Release& release) const;
    std::string itemOf(const Release& release) const;

    const ReleaseOptions options_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, Seen> seen_; // by file name: large files are read once
};

} // namespace lorvane::backend
