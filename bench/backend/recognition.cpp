// SPDX-License-Identifier: GPL-3.0-or-later
// Word error rate, processor time and memory of the offline recogniser, beside the recogniser's own command
// line tool on the same files: on the readings of pocketsphinx-testdata, or with FOLDER TRANSCRIPTS on the
// .wav files (16 kHz, one channel) of a folder, said by lines "name: words".
#include "engines/AudioDecoder.h"
#include "engines/PocketsphinxEngine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <numeric>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace lorvane::backend;

namespace {

const std::filesystem::path models = "/usr/share/pocketsphinx/model/en-us";

double processorSeconds(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double residentMiB() {
    std::ifstream statm("/proc/self/statm");
    double total = 0;
    double resident = 0;
    statm >> total >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1 << 20);
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}

std::size_t wordErrors(const std::vector<std::string>& said, const std::vector<std::string>& heard) {
    std::vector<std::size_t> row(heard.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const auto& word : said) {
        std::size_t diagonal = row[0]++;
        for (std::size_t k = 0; k < heard.size(); ++k) {
            const auto change = diagonal + (word == heard[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({change, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

struct Reading {
    std::string name;
    std::vector<std::string> said;
    std::vector<std::int16_t> samples;
};

std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

struct Corpus {
    std::filesystem::path folder;
    std::vector<Reading> readings;

    void add(const std::string& name, const std::string& said) {
        auto audio = decodeAudio(bytesOf(folder / (name + ".wav")), 600, {});
        if (auto* samples = std::get_if<std::vector<std::int16_t>>(&audio); samples && !samples->empty())
            readings.push_back({name, wordsOf(said), std::move(*samples)});
        else
            std::fprintf(stderr, "%s.wav cannot be read\n", name.c_str());
    }
    double seconds() const {
        double all = 0;
        for (const auto& reading : readings)
            all += static_cast<double>(reading.samples.size()) / sampleRate;
        return all;
    }
};

Corpus testReadings() {
    Corpus corpus{"/usr/share/pocketsphinx/test/data/librivox", {}};
    std::istringstream in(bytesOf(corpus.folder / "transcription"));
    for (std::string line; std::getline(in, line);) {
        const auto begin = line.find("<s> ");
        const auto end = line.find(" </s> (");
        if (begin != std::string::npos && end != std::string::npos)
            corpus.add(line.substr(end + 7, line.rfind(')') - end - 7),
                       line.substr(begin + 4, end - begin - 4));
    }
    return corpus;
}

Corpus ownRecordings(const char* folder, const char* transcripts) {
    Corpus corpus{folder, {}};
    std::istringstream in(bytesOf(transcripts));
    for (std::string line; std::getline(in, line);)
        if (const auto colon = line.find(": "); colon != std::string::npos)
            corpus.add(line.substr(0, colon), line.substr(colon + 2));
    return corpus;
}

struct Score {
    std::size_t errors = 0;
    std::size_t words = 0;
    double processor = 0;
    void print(const char* who, double seconds) const {
        std::printf(
            "%-28s word error rate %4.1f %% (%zu of %zu), %.2f s of processor time, real-time factor %.3f\n",
            who, 100.0 * static_cast<double>(errors) / static_cast<double>(words), errors, words, processor,
            processor / seconds);
    }
};

// As a device that dictates one reading after the other.
Score runEngine(PocketsphinxEngine& engine, const Corpus& corpus) {
    Score score;
    std::string adaptation;
    const double before = processorSeconds(RUSAGE_SELF);
    for (const auto& reading : corpus.readings) {
        std::string heard;
        RecognitionJob job;
        job.samples = reading.samples;
        job.adaptation = adaptation;
        const auto result =
            engine.recognise(job, [&](const HeardSegment& segment) { heard += segment.text + ' '; }, {});
        if (!result.adaptation.empty())
            adaptation = result.adaptation;
        score.errors += wordErrors(reading.said, wordsOf(heard));
        score.words += reading.said.size();
    }
    score.processor = processorSeconds(RUSAGE_SELF) - before;
    return score;
}

// The time of loading the model is taken off by a run over no file at all.
double toolSeconds(const Corpus& corpus, const std::string& list, const std::string& output,
                   const std::string& settings) {
    const std::string command = "pocketsphinx_batch -adcin yes -adchdr 44 -cepext .wav -cepdir " +
                                corpus.folder.string() + " -ctl " + list + " -hyp " + output + " -hmm " +
                                (models / "en-us").string() + " -lm " + (models / "en-us.lm.bin").string() +
                                " -dict " + (models / "cmudict-en-us.dict").string() + " -logfn /dev/null " +
                                settings;
    const double before = processorSeconds(RUSAGE_CHILDREN);
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("pocketsphinx_batch (package pocketsphinx) failed");
    return processorSeconds(RUSAGE_CHILDREN) - before;
}

Score runTool(const Corpus& corpus, const std::string& settings) {
    auto folder = (std::filesystem::temp_directory_path() / "lorvane-bench-XXXXXX").string();
    if (!::mkdtemp(folder.data()))
        throw std::runtime_error("no temporary folder");
    const std::string list = folder + "/list";
    const std::string none = folder + "/none";
    const std::string output = folder + "/heard";
    std::ofstream(none) << "";
    {
        std::ofstream out(list);
        for (const auto& reading : corpus.readings)
            out << reading.name << '\n';
    }
    Score score;
    score.processor = toolSeconds(corpus, list, output, settings) -
                      toolSeconds(corpus, none, folder + "/nothing", settings);
    std::map<std::string, std::string>
        heard; // a line is "words (name score)"; where it heard nothing there may be none
    std::istringstream in(bytesOf(output));
    for (std::string line; std::getline(in, line);)
        if (const auto bracket = line.rfind('('); bracket != std::string::npos)
            heard[line.substr(bracket + 1, line.rfind(' ') - bracket - 1)] = line.substr(0, bracket);
    for (const auto& reading : corpus.readings) {
        score.errors += wordErrors(reading.said, wordsOf(heard[reading.name]));
        score.words += reading.said.size();
    }
    std::filesystem::remove_all(folder);
    return score;
}

} // namespace

int main(int count, char** words) {
    const auto corpus = count == 3 ? ownRecordings(words[1], words[2]) : testReadings();
    const double seconds = corpus.seconds();
    if (corpus.readings.empty()) {
        std::fprintf(stderr, "no recordings; usage: %s [FOLDER TRANSCRIPTS]\n", words[0]);
        return 1;
    }
    std::printf("%zu recordings, %.1f s\n", corpus.readings.size(), seconds);
    const double memoryBefore = residentMiB();
    PocketsphinxEngine engine(models, 1);
    engine.warmUp();
    const double memoryLoaded = residentMiB();
    const auto ours = runEngine(engine, corpus);
    ours.print("lorvane-backend", seconds);
    std::printf("%-28s %.0f MiB loaded, %.0f MiB afterwards\n", "  memory of one decoder",
                memoryLoaded - memoryBefore, residentMiB() - memoryBefore);
    const auto tool = runTool(corpus, "");
    tool.print("pocketsphinx_batch", seconds);
    std::printf("%-28s %.2f\n", "  ratio of processor time", ours.processor / tool.processor);
    const auto same = runTool(corpus, "-lw 5 -wip 0.2 -maxhmmpf 3000");
    same.print("the same with our settings", seconds);
    std::printf("%-28s %.2f\n", "  ratio of processor time", ours.processor / same.processor);
    return 0;
}
