// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/UpstreamEngine.h"

#include "engines/Pauses.h"
#include "engines/SocketSpeech.h"
#include "engines/Transcript.h"
#include "net/HttpCall.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

constexpr double leastSpeechSeconds = 0.3;
constexpr std::size_t longestPart = std::size_t(sampleRate) * 600; // 19 MB; common servers take 25
constexpr std::size_t longestPrompt = 600;                         // bytes

// The end of the text, beginning with a whole word.
std::string promptOf(std::string_view text) {
    if (text.size() <= longestPrompt)
        return std::string(text);
    text.remove_prefix(text.size() - longestPrompt);
    const auto blank = text.find(' ');
    return blank == std::string_view::npos ? std::string() : std::string(text.substr(blank + 1));
}

std::chrono::milliseconds lengthOf(Samples part) {
    return std::chrono::milliseconds(part.size() * 1000 / sampleRate);
}

std::vector<Samples> partsOf(Samples samples) {
    std::vector<Samples> parts;
    std::size_t begin = 0;
    std::size_t end = 0;
    for (const auto& segment : cutAtPauses(samples)) {
        if (segment.end - begin > longestPart) {
            parts.push_back(samples.subspan(begin, end - begin));
            begin = end;
        }
        end = segment.end;
    }
    if (end > begin)
        parts.push_back(samples.subspan(begin, end - begin));
    return parts;
}

std::vector<FormPart> formOf(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                             std::string_view before) {
    const auto& profile = *upstream.profile;
    std::vector<FormPart> form{{"file", wavOf(part), "take.wav", "audio/wav"},
                               {"response_format", "json", {}, {}},
                               {"temperature", "0", {}, {}}};
    if (!upstream.model.empty())
        form.push_back({"model", upstream.model, {}, {}});
    const auto language = job.language.empty() ? profile.unknownLanguage : job.language;
    if (!language.empty())
        form.push_back({"language", std::string(language), {}, {}});
    if (const auto prompt = promptOf(before); profile.prompt && !prompt.empty())
        form.push_back({"prompt", prompt, {}, {}});
    return form;
}

std::vector<PooledServer> serversOf(const std::vector<SpeechUpstream>& upstreams) {
    std::vector<PooledServer> servers;
    for (const auto& upstream : upstreams)
        servers.push_back({upstream.url, upstream.profile->atOnce});
    return servers;
}

bool maybeEnglish(std::string_view language) { return language.empty() || language == "en"; }

void putNumber(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i) & 0xffU);
}

} // namespace

UpstreamEngine::UpstreamEngine(std::vector<SpeechUpstream> upstreams, UpstreamTimes times)
    : upstreams_(std::move(upstreams)), times_(times), pool_("speech", serversOf(upstreams_), times.pool) {}

bool UpstreamEngine::mayBePlain(std::string_view language) const {
    return maybeEnglish(language) &&
           std::any_of(upstreams_.begin(), upstreams_.end(),
                       [](const SpeechUpstream& upstream) { return !upstream.profile->sentences; });
}

Recognition UpstreamEngine::recognise(const RecognitionJob& job, const OnSegment& onSegment,
                                      std::stop_token stop) try {
    // A server that hears silence makes up sentences.
    if (speechSeconds(job.samples) < leastSpeechSeconds)
        return {Recognition::End::noSpeech, {}, {}};
    const auto parts = partsOf(job.samples);
    std::string before(job.context);
    bool heard = job.segmentsKnown > 0;
    for (std::size_t i = job.segmentsKnown; i < parts.size(); ++i) {
        HeardSegment segment;
        const auto attempt = pool_.run(
            [&](std::size_t server) { return ask(upstreams_[server], parts[i], job, before, segment, stop); },
            stop);
        if (attempt.end == Attempt::End::stopped)
            return {Recognition::End::stopped, {}, {}};
        if (attempt.end != Attempt::End::done)
            return {Recognition::End::failed, {}, attempt.reason};
        heard = heard || !segment.text.empty();
        before += (before.empty() ? "" : " ") + segment.text;
        onSegment(std::move(segment));
    }
    return {heard ? Recognition::End::complete : Recognition::End::noSpeech, {}, {}};
} catch (const std::exception& error) {
    return {Recognition::End::failed, {}, error.what()};
}

Attempt UpstreamEngine::ask(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                            std::string_view before, HeardSegment& heard, const std::stop_token& stop) const {
    heard.plain = !upstream.profile->sentences && maybeEnglish(job.language);
    return upstream.profile->protocol == SpeechProtocol::openai
               ? askHttp(upstream, part, job, before, heard.text, stop)
               : askSocket(upstream, part, job, heard.text, stop);
}

Attempt UpstreamEngine::askSocket(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                                  std::string& text, const std::stop_token& stop) const {
    SocketSpeechCall call;
    call.address = speechSocket(upstream.profile->protocol, upstream.url).value_or(SocketAddress());
    call.model = upstream.model;
    call.language = job.language;
    call.samples = part;
    call.connectTime = times_.connect;
    call.answerTime = std::max(times_.answer, 2 * lengthOf(part));
    call.wholeTime = times_.whole;
    const auto answer = upstream.profile->protocol == SpeechProtocol::vosk ? hearByVosk(call, stop)
                                                                           : hearByWyoming(call, stop);
    if (answer.call.end == SocketCallEnd::End::stopped)
        return {Attempt::End::stopped, {}};
    if (answer.call.end != SocketCallEnd::End::done)
        return {Attempt::End::next, answer.call.reason};
    text = onOneLine(answer.text);
    return {Attempt::End::done, {}};
}

Attempt UpstreamEngine::askHttp(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                                std::string_view before, std::string& text,
                                const std::stop_token& stop) const {
    HttpCall call;
    call.url = upstream.url + std::string(upstream.profile->path);
    call.bearer = upstream.key;
    call.form = formOf(upstream, part, job, before);
    call.connectTime = times_.connect;
    call.answerTime = std::max(times_.answer, 2 * lengthOf(part));
    call.wholeTime = times_.whole;
    const auto answer = callHttp(call, stop);
    if (answer.end == HttpAnswer::End::stopped)
        return {Attempt::End::stopped, {}};
    if (answer.end != HttpAnswer::End::whole)
        return {Attempt::End::next, answer.reason};
    // Its words about an error may quote the take, so that the status is all that is told.
    const auto status = "status " + std::to_string(answer.status);
    if (answer.status == 400 || answer.status == 415 || answer.status == 422)
        return {Attempt::End::over, "the sound was refused with " + status};
    if (answer.status != 200)
        return {Attempt::End::next, status};
    auto heard = transcriptOf(answer.body);
    if (!heard)
        return {Attempt::End::next, "an answer without text"};
    text = std::move(*heard);
    return {Attempt::End::done, {}};
}

std::string wavOf(Samples samples) {
    const auto bytes = static_cast<std::uint32_t>(samples.size() * 2);
    std::string file = "RIFF";
    putNumber(file, 36 + bytes, 4);
    file += "WAVEfmt ";
    putNumber(file, 16, 4);
    putNumber(file, 1, 2); // PCM
    putNumber(file, 1, 2); // channels
    putNumber(file, sampleRate, 4);
    putNumber(file, sampleRate * 2, 4);
    putNumber(file, 2, 2);
    putNumber(file, 16, 2);
    file += "data";
    putNumber(file, bytes, 4);
    for (const auto sample : samples)
        putNumber(file, static_cast<std::uint16_t>(sample), 2);
    return file;
}

} // namespace lorvane::backend
