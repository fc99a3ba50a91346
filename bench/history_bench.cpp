// SPDX-License-Identifier: GPL-3.0-or-later
// The history at 1,000, 10,000 and 100,000 items:
// - loading the file, against what simdjson needs to parse the same bytes, by turns in the same run, and what
//   the other parsers of the system need for them;
// - what a change costs the main thread while a write runs beside it, as time of the processor and as time
// passed;
// - what the write costs the other thread.
// --parsers: the parsers alone, on the two larger files.
#include "base/testing/VirtualClock.h"
#include "history/MacHistoryStore.h"
#include "platform/linux/desktop/DiskStateFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <boost/json/src.hpp>
#include <rapidjson/document.h>
#include <simdjson.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <stdexcept>

#include <time.h>

namespace {

using namespace lorvane;

double millisecondsOf(const std::function<void()>& work) {
    const auto before = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before).count();
}

double processorMilliseconds() {
    timespec used = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

struct Costs {
    std::vector<double> values;

    void add(double value) { values.push_back(value); }
    [[nodiscard]] double quantile(double share) const {
        std::vector<double> sorted = values;
        std::ranges::sort(sorted);
        return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
    }
    [[nodiscard]] double median() const { return quantile(0.5); }
    [[nodiscard]] double least() const { return quantile(0); }
    [[nodiscard]] double worst() const { return quantile(1); }
};

/// About 500 bytes an item on disk, as ten years of dictations have them; every fourth in Cyrillic letters.
HistoryItem someItem(std::mt19937& random, std::size_t number) {
    static const QString latin = QStringLiteral("Please move the meeting with the \"north\" team to "
                                                "Thursday, and tell them that the draft is ready.\n");
    static const QString cyrillic = QString::fromUtf8(
        "Перенеси, пожалуйста, встречу с командой на четверг и скажи, что черновик готов к чтению. ");
    const QString& words = number % 4 == 3 ? cyrillic : latin;
    const auto length = static_cast<qsizetype>(random() % 340);
    HistoryItem item;
    item.id = QUuid::createUuid();
    item.text =
        words.repeated(4).mid(static_cast<qsizetype>(random() % 40), number % 4 == 3 ? length / 2 : length);
    item.raw = item.text.toLower();
    item.createdAt = FileDate{8e8 - static_cast<double>(number) * 3000.123};
    item.durationSec = static_cast<double>(random() % 60'000) / 1'000;
    item.device = number % 10 == 0 ? QStringLiteral("ios") : QStringLiteral("mac");
    if (number % 3 == 0) {
        item.category = QStringLiteral("work");
    }
    return item;
}

Backup someBackup(std::size_t count) {
    std::mt19937 random(1);
    Backup backup;
    std::vector<HistoryItem> items;
    for (std::size_t number = 0; number < count; ++number) {
        items.push_back(someItem(random, number));
        if (number % 10 == 0) {
            backup.deleted.insert(QUuid::createUuid());
        }
    }
    backup.history = HistoryList(std::move(items));
    return backup;
}

QByteArray withRoom(QByteArray bytes) {
    bytes.reserve(bytes.size() + decodingRoom);
    return bytes;
}

void parseWithSimdjson(const QByteArray& padded) {
    simdjson::dom::parser parser;
    if (parser.parse(padded.constData(), static_cast<std::size_t>(padded.size()), false).error() != 0) {
        throw std::runtime_error("simdjson did not parse it");
    }
}

void parseWithRapidjson(const QByteArray& bytes) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag>(
        bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (document.HasParseError()) {
        throw std::runtime_error("RapidJSON did not parse it");
    }
}

void parseWithBoost(const QByteArray& bytes) {
    boost::json::monotonic_resource memory;
    const auto value =
        boost::json::parse({bytes.constData(), static_cast<std::size_t>(bytes.size())}, &memory);
    if (!value.is_object()) {
        throw std::runtime_error("Boost.JSON did not parse it");
    }
}

void parseWithQt(const QByteArray& bytes) {
    if (!QJsonDocument::fromJson(bytes).isObject()) {
        throw std::runtime_error("Qt did not parse it");
    }
}

void compareParsers(std::size_t count) {
    const QByteArray bytes = withRoom(*encodeBackup(someBackup(count)));
    struct Parser {
        const char* name;
        void (*parse)(const QByteArray&);
    };
    constexpr Parser parsers[] = {{"simdjson", parseWithSimdjson},
                                  {"RapidJSON", parseWithRapidjson},
                                  {"Boost.JSON", parseWithBoost},
                                  {"Qt", parseWithQt}};
    std::array<Costs, std::size(parsers)> costs;
    for (int round = 0; round < 7; ++round) {
        for (std::size_t which = 0; which < std::size(parsers); ++which) {
            costs[which].add(millisecondsOf([&] { parsers[which].parse(bytes); }));
        }
    }
    std::printf("parse %.1f MB\n", static_cast<double>(bytes.size()) / 1e6);
    for (std::size_t which = 0; which < std::size(parsers); ++which) {
        std::printf("  %-10s median %8.1f ms, least %8.1f ms, %5.1f times simdjson\n", parsers[which].name,
                    costs[which].median(), costs[which].least(), costs[which].median() / costs[0].median());
    }
}

/// The same work many times: the time of the processor, which others on the machine change little, and the
/// time passed.
struct WorkCosts {
    Costs processor;
    Costs passed;

    void measure(const std::function<void()>& work) {
        const double before = processorMilliseconds();
        passed.add(millisecondsOf(work));
        processor.add(processorMilliseconds() - before);
    }
};

struct LoadCosts {
    WorkCosts load;
    WorkCosts decode;
    WorkCosts parse;
    WorkCosts parseAgain;

    void print() const {
        const auto line = [this](const char* what, Costs WorkCosts::*of) {
            const double whole = (load.*of).median();
            const double reference = (parse.*of).median();
            const double again = (parseAgain.*of).median();
            std::printf(
                "  load, %s: %.2f ms, of which decoding %.2f; simdjson %.2f ms, ratio %.2f; simdjson with "
                "memory that it has used before %.2f ms, ratio %.2f\n",
                what, whole, (decode.*of).median(), reference, whole / reference, again, whole / again);
        };
        line("processor", &WorkCosts::processor);
        line("passed", &WorkCosts::passed);
    }
};

void benchLoad(const QString& path, const QByteArray& bytes, int rounds) {
    LoadCosts costs;
    simdjson::dom::parser kept;
    for (int round = 0; round < rounds; ++round) {
        VirtualClock clock;
        DiskStateFile file(path);
        std::unique_ptr<MacHistoryStore> store;
        costs.load.measure([&] { store = std::make_unique<MacHistoryStore>(clock, file); });
        if (store->items().isEmpty()) {
            throw std::runtime_error("nothing was loaded");
        }
        store.reset();
        std::optional<Backup> backup;
        costs.decode.measure([&] { backup = decodeBackup(bytes); });
        backup.reset();
        costs.parse.measure([&] { parseWithSimdjson(bytes); });
        costs.parseAgain.measure([&] {
            (void)kept.parse(bytes.constData(), static_cast<std::size_t>(bytes.size()), false).error();
        });
    }
    costs.print();
}

void printChange(const char* what, const WorkCosts& costs) {
    std::printf(
        "  %-20s processor: median %.3f ms, worst %.3f ms; passed: median %.3f ms, 99th percentile %.3f ms, "
        "worst %.3f ms\n",
        what, costs.processor.median(), costs.processor.worst(), costs.passed.median(),
        costs.passed.quantile(0.99), costs.passed.worst());
}

std::vector<QUuid> idsOf(const HistoryList& items) {
    std::vector<QUuid> ids;
    for (const HistoryItem& item : items) {
        ids.push_back(item.id);
    }
    return ids;
}

void benchChanges(const QString& path) {
    VirtualClock clock;
    DiskStateFile file(path);
    MacHistoryStore store(clock, file);
    const std::vector<QUuid> ids = idsOf(store.items());
    std::mt19937 random(2);
    WorkCosts add;
    WorkCosts edit;
    WorkCosts label;
    WorkCosts remove;
    WorkCosts selection;
    for (std::size_t round = 0; round < 400; ++round) {
        const HistoryItem item = someItem(random, random());
        add.measure([&] { store.add(item); });
        const QUuid any = ids[random() % ids.size()];
        edit.measure([&] { store.updateText(any, QStringLiteral("edited")); });
        label.measure([&] { store.setCategory(ids.back(), QStringLiteral("home")); });
        remove.measure([&] { store.remove(ids[round]); });
        if (round % 100 == 99) {
            clock.advance(std::chrono::milliseconds(250)); // the write runs beside the changes that follow
        }
    }
    selection.measure([&] { store.remove(QSet<QUuid>(ids.begin() + 400, ids.begin() + 700)); });
    printChange("add", add);
    printChange("edit any", edit);
    printChange("label the last", label);
    printChange("remove any", remove);
    printChange("remove 300 at once", selection);
}

void benchWrite(const QString& path, const Backup& backup, int rounds) {
    DiskStateFile file(path);
    Costs encode;
    Costs write;
    for (int round = 0; round < rounds; ++round) {
        std::optional<QByteArray> bytes;
        encode.add(millisecondsOf([&] { bytes = encodeBackup(backup); }));
        write.add(millisecondsOf([&] {
            if (!file.replace(*bytes, StateFile::Predecessor::overwritten)) {
                throw std::runtime_error("could not write");
            }
        }));
    }
    std::printf("  write, off the main thread: encoding %.1f ms, to the disk %.1f ms (worst %.1f)\n",
                encode.median(), write.median(), write.worst());
}

void bench(std::size_t count, int rounds) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("tirra-history.json"));
    const Backup backup = someBackup(count);
    const QByteArray bytes = withRoom(*encodeBackup(backup));
    std::printf("%zu items, %.2f MB\n", count, static_cast<double>(bytes.size()) / 1e6);
    benchWrite(path, backup, std::min(rounds, 15));
    benchLoad(path, bytes, rounds);
    benchChanges(path);
}

} // namespace

int main(int argc, char** argv) {
    constexpr std::size_t most = 100'000;
    compareParsers(most / 10);
    compareParsers(most);
    if (argc > 1 && qstrcmp(argv[1], "--parsers") == 0) {
        return 0;
    }
    bench(1'000, 201);
    bench(10'000, 51);
    bench(most, 15);
}
