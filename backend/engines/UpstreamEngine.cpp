// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/UpstreamEngine.h"

#include "engines/Pauses.h"
#include "net/HttpCall.h"
#include "util/Log.h"

#include <algorithm>
#include <boost/json.hpp>
#include <random>

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

// Servers put line ends between segments and blanks around them.
std::string onOneLine(std::string_view text) {
    std::string out;
    bool blank = false;
    for (const char c : text) {
        const bool space = c == ' ' || c == '\n' || c == '\r' || c == '\t';
        if (!space && blank && !out.empty())
            out += ' ';
        blank = space;
        if (!space)
            out += c;
    }
    return out;
}

std::optional<std::string> textOf(const std::string& body) {
    boost::json::error_code error;
    const auto value = boost::json::parse(body, error);
    if (error || !value.is_object())
        return std::nullopt;
    const auto* text = value.as_object().if_contains("text");
    if (!text || !text->is_string())
        return std::nullopt;
    return onOneLine({text->as_string().data(), text->as_string().size()});
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

void putNumber(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i) & 0xffU);
}

} // namespace

// A server, with the requests that are there now.
struct UpstreamEngine::Place {
    SpeechUpstream upstream;
    CircuitBreaker breaker;
    std::size_t busy = 0;
};

UpstreamEngine::UpstreamEngine(std::vector<SpeechUpstream> upstreams, UpstreamTimes times) : times_(times) {
    for (auto& upstream : upstreams)
        places_.push_back(std::make_unique<Place>(Place{std::move(upstream), {}, 0}));
}

UpstreamEngine::~UpstreamEngine() = default;

Recognition UpstreamEngine::recognise(const RecognitionJob& job, const OnSegment& onSegment,
                                      std::stop_token stop) try {
    // A server that hears silence makes up sentences.
    if (speechSeconds(job.samples) < leastSpeechSeconds)
        return {Recognition::End::noSpeech, {}, {}};
    const auto parts = partsOf(job.samples);
    std::string before(job.context);
    bool heard = job.segmentsKnown > 0;
    for (std::size_t i = job.segmentsKnown; i < parts.size(); ++i) {
        auto result = hear(parts[i], job, before, stop);
        if (result.end == Heard::End::stopped)
            return {Recognition::End::stopped, {}, {}};
        if (result.end != Heard::End::text)
            return {Recognition::End::failed, {}, result.reason};
        heard = heard || !result.text.empty();
        before += (before.empty() ? "" : " ") + result.text;
        onSegment(std::move(result.text));
    }
    return {heard ? Recognition::End::complete : Recognition::End::noSpeech, {}, {}};
} catch (const std::exception& error) {
    return {Recognition::End::failed, {}, error.what()};
}

// Everybody may be restarting at once; a second look a moment later is cheap.
UpstreamEngine::Heard UpstreamEngine::hear(Samples part, const RecognitionJob& job, std::string_view before,
                                           const std::stop_token& stop) {
    auto heard = tryAll(part, job, before, stop);
    if (heard.end != Heard::End::next)
        return heard;
    thread_local std::minstd_rand random{std::random_device{}()};
    const auto pause = times_.secondRound + times_.secondRound * (random() % 100) / 100;
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, stop, pause, [] { return false; });
    }
    return stop.stop_requested() ? Heard{Heard::End::stopped, {}, {}} : tryAll(part, job, before, stop);
}

UpstreamEngine::Heard UpstreamEngine::tryAll(Samples part, const RecognitionJob& job, std::string_view before,
                                             const std::stop_token& stop) {
    Heard last{Heard::End::next, {}, "no speech server is to be tried now"};
    std::set<const Place*> tried;
    while (Place* place = enter(tried, stop)) {
        last = ask(*place, part, job, before, stop);
        leave(*place, last);
        if (last.end != Heard::End::next)
            break;
        logLine("speech server " + place->upstream.url + ": " + last.reason);
    }
    return stop.stop_requested() ? Heard{Heard::End::stopped, {}, {}} : last;
}

// The first server, in order, that was not tried and has room; when all of those are full, the first that
// gets room within the time.
UpstreamEngine::Place* UpstreamEngine::enter(std::set<const Place*>& tried, const std::stop_token& stop) {
    const auto open = [&](const auto& place) { return !tried.contains(place.get()); };
    const auto hasRoom = [&](const auto& place) {
        return open(place) && place->busy < place->upstream.profile->atOnce;
    };
    const auto latest = std::chrono::steady_clock::now() + times_.queue;
    std::unique_lock lock(mutex_);
    while (std::any_of(places_.begin(), places_.end(), open)) {
        const bool room = changed_.wait_until(
            lock, stop, latest, [&] { return std::any_of(places_.begin(), places_.end(), hasRoom); });
        if (!room || stop.stop_requested())
            break;
        const auto& place = *std::find_if(places_.begin(), places_.end(), hasRoom);
        tried.insert(place.get());
        if (!place->breaker.allows(std::chrono::steady_clock::now()))
            continue;
        ++place->busy;
        return place.get();
    }
    return nullptr;
}

void UpstreamEngine::leave(Place& place, const Heard& heard) {
    {
        const std::lock_guard lock(mutex_);
        --place.busy;
        if (heard.end == Heard::End::text || heard.end == Heard::End::refused)
            place.breaker.succeeded();
        if (heard.end == Heard::End::next)
            place.breaker.failed(std::chrono::steady_clock::now());
    }
    changed_.notify_all();
}

UpstreamEngine::Heard UpstreamEngine::ask(Place& place, Samples part, const RecognitionJob& job,
                                          std::string_view before, const std::stop_token& stop) {
    const auto& upstream = place.upstream;
    const auto sound = std::chrono::milliseconds(part.size() * 1000 / sampleRate);
    HttpCall call;
    call.url = upstream.url + std::string(upstream.profile->path);
    call.bearer = upstream.key;
    call.form = formOf(upstream, part, job, before);
    call.connectTime = times_.connect;
    call.answerTime = std::max(times_.answer, 2 * sound);
    call.wholeTime = times_.whole;
    const auto answer = callHttp(call, stop);
    if (answer.end == HttpAnswer::End::stopped)
        return {Heard::End::stopped, {}, {}};
    if (answer.end != HttpAnswer::End::whole)
        return {Heard::End::next, {}, answer.reason};
    // Its words about an error may quote the take, so that the status is all that is told.
    const auto status = "status " + std::to_string(answer.status);
    if (answer.status == 400 || answer.status == 415 || answer.status == 422)
        return {Heard::End::refused, {}, "the sound was refused with " + status};
    if (answer.status != 200)
        return {Heard::End::next, {}, status};
    auto text = textOf(answer.body);
    if (!text)
        return {Heard::End::next, {}, "an answer without text"};
    return {Heard::End::text, std::move(*text), {}};
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
