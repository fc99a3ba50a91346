// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/ReleaseFeed.h"

#include "api/Markup.h"
#include "util/Base64.h"
#include "util/Log.h"
#include "util/Signature.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <regex>
#include <sstream>

namespace lorvane::backend {

namespace fs = std::filesystem;

namespace {

std::optional<std::string> contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    return text;
}

std::vector<unsigned long> numbersOf(const std::string& version) {
    std::vector<unsigned long> numbers;
    std::istringstream in(version);
    for (std::string part; std::getline(in, part, '.');)
        numbers.push_back(std::stoul(part));
    return numbers;
}

std::string dateOf(fs::file_time_type written) {
    const auto system = std::chrono::file_clock::to_sys(written);
    const auto seconds =
        std::chrono::system_clock::to_time_t(std::chrono::time_point_cast<std::chrono::seconds>(system));
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    const auto size = std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S +0000", &parts);
    return {text.data(), size};
}

} // namespace

ReleaseFeed::ReleaseFeed(ReleaseOptions options) : options_(std::move(options)) {}

std::optional<ReleaseFeed::Release> ReleaseFeed::releaseOf(const fs::path& file) const {
    static const std::regex form("[A-Za-z0-9_]+-([0-9]{1,9}(?:\\.[0-9]{1,9}){0,5})\\.[A-Za-z][A-Za-z0-9]*"
                                 "(?:\\.[A-Za-z][A-Za-z0-9]*)?");
    const auto name = file.filename().string();
    std::smatch match;
    if (!std::regex_match(name, match, form) || name.ends_with(".sig") || name.ends_with(".html"))
        return std::nullopt;
    auto signature = contentOf(fs::path(file) += ".sig");
    std::error_code error;
    Release release{
        file, numbersOf(match[1]), match[1], trimmed(signature.value_or("")), fs::file_size(file, error), {}};
    if (!signature || error)
        return std::nullopt;
    release.written = fs::last_write_time(file, error);
    return error ? std::nullopt : std::optional(std::move(release));
}

bool ReleaseFeed::verified(const Release& release) const {
    const auto name = release.file.filename().string();
    const auto known = seen_.find(name);
    if (known != seen_.end() && known->second.size == release.size &&
        known->second.written == release.written && known->second.signature == release.signature)
        return known->second.good;
    const auto bytes = contentOf(release.file);
    const auto signature = decodeBase64(release.signature);
    const bool good = bytes && signature && ed25519Verifies(options_.publicKey, *bytes, *signature);
    if (!good)
        logLine("a release is left out, its signature does not verify: " + name);
    seen_.insert_or_assign(name, Seen{release.size, release.written, release.signature, good});
    return good;
}

std::string ReleaseFeed::itemOf(const Release& release) const {
    const auto name = release.file.filename().string();
    const auto notes = contentOf(fs::path(release.file) += ".html");
    std::string item = "    <item>\n      <title>Lorvane " + release.versionText +
                       "</title>\n      <pubDate>" + dateOf(release.written) +
                       "</pubDate>\n      <sparkle:version>" + release.versionText +
                       "</sparkle:version>\n      <sparkle:shortVersionString>" + release.versionText +
                       "</sparkle:shortVersionString>\n";
    if (notes)
        item += "      <description>" + escapedMarkup(*notes) + "</description>\n";
    return item + "      <enclosure url=\"" + escapedMarkup(options_.url + '/' + name) + "\" length=\"" +
           std::to_string(release.size) + "\" type=\"application/octet-stream\" sparkle:edSignature=\"" +
           escapedMarkup(release.signature) + "\"/>\n    </item>\n";
}

std::optional<std::string> ReleaseFeed::xml() const {
    if (options_.folder.empty())
        return std::nullopt;
    std::vector<Release> releases;
    const std::lock_guard lock(mutex_);
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(options_.folder, error))
        if (auto release = entry.is_regular_file(error) ? releaseOf(entry.path()) : std::nullopt;
            release && verified(*release))
            releases.push_back(std::move(*release));
    if (releases.empty())
        return std::nullopt;
    std::sort(releases.begin(), releases.end(),
              [](const auto& a, const auto& b) { return a.version > b.version; });
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rss version=\"2.0\" "
                       "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\">\n  <channel>\n"
                       "    <title>Lorvane</title>\n";
    for (const auto& release : releases)
        text += itemOf(release);
    return text + "  </channel>\n</rss>\n";
}

} // namespace lorvane::backend
