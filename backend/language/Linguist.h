// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/Apertium.h"
#include "language/ChatClient.h"
#include "language/Coach.h"
#include "language/Insights.h"
#include "language/Writer.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// All that is said about texts: by language servers when there are any, and by what this machine can do alone
// when there are none, or they fail. Any thread; every call blocks.
class Linguist {
 public:
    // Without servers, or without a program for translation: an empty list, an empty path.
    Linguist(const std::vector<ChatServer>& servers, const std::filesystem::path& apertium);
    ~Linguist();

    // Finds out what the local translator can do; until then it does nothing. Blocks for seconds.
    void prepare(const std::stop_token& stop);

    // Texts written by language servers; nothing without any.
    const Writer* writer() const { return writer_ ? &*writer_ : nullptr; }

    // Of the language servers.
    ServerFigures figures() const;

    // Nothing for too few messages.
    std::optional<Insights> insights(const std::vector<std::string>& samples,
                                     const std::stop_token& stop) const;
    // Empty for texts without words.
    std::string summary(const std::vector<std::string>& texts, std::string_view period,
                        const std::stop_token& stop) const;
    // Empty when none fits.
    std::string label(std::string_view text, const std::stop_token& stop) const;

    // Whether it can be tried at all. An empty source: nobody knows.
    bool translates(std::string_view source, std::string_view target) const;
    Translation translate(std::string_view text, std::string_view source, std::string_view target,
                          const Writer::OnFragment& onFragment, const std::stop_token& stop) const;

 private:
    const std::unique_ptr<ChatClient> chat_;
    const std::unique_ptr<ChatClient>
        hurried_; // the same servers, for what goes without them sooner than late
    std::optional<Writer> writer_;
    std::optional<Coach> coach_;
    std::optional<Coach> sorter_;
    const std::unique_ptr<Apertium> apertium_;
};

} // namespace lorvane::backend
