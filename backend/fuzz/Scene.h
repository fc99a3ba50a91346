// SPDX-License-Identifier: GPL-3.0-or-later
// The input of the target `handlers`: requests one after the other, written so that seeds can be read.
//
//   POST /api/dictate?x=y
//   Bearer: one
//   Type: application/vnd.tirra.take
//   Framed: yes
//   Sound: 8000
//
//   {"ext":"wav"}
//   %%
//   GET /readyz
//
// After the header lines and an empty one comes the body, up to a line of "%%". A body that is `Framed` is
// the JSON of a take, a line end, and its audio; `Sound` adds a WAV file of so many samples. `Words` are what
// the recogniser hears, its segments between "|". `Later` moves the clock on by so many seconds.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend::fuzz {

struct ScriptedRequest {
    std::string_view method;
    std::string_view target;
    std::map<std::string_view, std::string_view> header;
    std::string body;

    std::string_view field(std::string_view name) const;
    // At most `most`; 0 when there is no such number.
    long number(std::string_view name, long most) const;
};

// At most eight.
std::vector<ScriptedRequest> readScene(std::string_view input);

} // namespace lorvane::backend::fuzz
