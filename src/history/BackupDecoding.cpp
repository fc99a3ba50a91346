// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/Backup.h"

#include <simdjson.h>

#include <array>
#include <string_view>

namespace lorvane {

namespace {

static_assert(decodingRoom >= qsizetype(simdjson::SIMDJSON_PADDING));

using simdjson::dom::element;

// Each `read` leaves false when the element is of another kind.

// Qt's own conversion checks again what the parser has checked, and keeps a unit of room for every byte.
QString toString(std::string_view utf8) {
    qsizetype units = 0;
    for (const char byte : utf8) {
        const auto value = static_cast<unsigned char>(byte);
        units += static_cast<signed char>(byte) >= -0x40; // not a continuation
        units += value >= 0xF0;                           // two units
    }
    if (units == static_cast<qsizetype>(utf8.size())) {
        return QString::fromLatin1(utf8.data(), units);
    }
    QString text(units, Qt::Uninitialized);
    QChar* to = text.data();
    for (std::size_t at = 0; at < utf8.size();) {
        const auto part = [&](std::size_t offset) { return static_cast<char32_t>(utf8[at + offset] & 0x3F); };
        const auto first = static_cast<unsigned char>(utf8[at]);
        if (first < 0x80) {
            *to++ = QChar(first);
            at += 1;
        } else if (first < 0xE0) {
            *to++ = QChar(static_cast<char16_t>((first & 0x1F) << 6 | part(1)));
            at += 2;
        } else if (first < 0xF0) {
            *to++ = QChar(static_cast<char16_t>((first & 0x0F) << 12 | part(1) << 6 | part(2)));
            at += 3;
        } else {
            const char32_t point = (first & 0x07) << 18 | part(1) << 12 | part(2) << 6 | part(3);
            *to++ = QChar(QChar::highSurrogate(point));
            *to++ = QChar(QChar::lowSurrogate(point));
            at += 4;
        }
    }
    return text;
}

bool read(const element& json, QString& value) {
    std::string_view text;
    if (json.get(text) != simdjson::SUCCESS) {
        return false;
    }
    value = toString(text);
    return true;
}

bool read(const element& json, double& value) { return json.get(value) == simdjson::SUCCESS; }

bool read(const element& json, FileDate& value) { return read(json, value.seconds); }

constexpr unsigned noDigit = 0xF0;
constexpr std::array<unsigned char, 256> hexDigits = [] {
    std::array<unsigned char, 256> digits{};
    digits.fill(noDigit);
    for (int digit = 0; digit < 10; ++digit) {
        digits['0' + digit] = static_cast<unsigned char>(digit);
    }
    for (int digit = 0; digit < 6; ++digit) {
        digits['A' + digit] = digits['a' + digit] = static_cast<unsigned char>(10 + digit);
    }
    return digits;
}();

// QUuid's own reader also takes braces, and garbage for the null id.
bool read(const element& json, QUuid& value) {
    constexpr std::array<unsigned char, 16> places{0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};
    std::string_view text;
    if (json.get(text) != simdjson::SUCCESS || text.size() != 36 || text[8] != '-' || text[13] != '-' ||
        text[18] != '-' || text[23] != '-') {
        return false;
    }
    std::array<char, 16> bytes{};
    unsigned all = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const unsigned high = hexDigits[static_cast<unsigned char>(text[places[at]])];
        const unsigned low = hexDigits[static_cast<unsigned char>(text[places[at] + 1U])];
        all |= high | low;
        bytes[at] = static_cast<char>(high * 16 + low);
    }
    value = QUuid::fromRfc4122(QByteArrayView(bytes.data(), bytes.size()));
    return (all & noDigit) == 0;
}

template <typename T>
bool read(const element& json, std::optional<T>& value) {
    if (json.is_null()) {
        value.reset();
        return true;
    }
    return read(json, value.emplace());
}

/// A handful of labels and devices is repeated in every item; each is kept once.
class SharedWords {
 public:
    bool read(const element& json, std::optional<QString>& value) {
        std::string_view text;
        if (json.get(text) != simdjson::SUCCESS) {
            value.reset();
            return json.is_null();
        }
        Word& word = words_[text.size() % words_.size()];
        if (word.utf8 != text || word.text.isNull()) {
            word = {text, toString(text)};
        }
        value = word.text;
        return true;
    }

 private:
    struct Word {
        std::string_view utf8;
        QString text;
    };
    std::array<Word, 32> words_;
};

class ItemReader {
 public:
    bool read(const element& json, HistoryItem& item) {
        simdjson::dom::object fields;
        if (json.get(fields) != simdjson::SUCCESS) {
            return false;
        }
        found_ = 0;
        for (const auto& [key, value] : fields) {
            if (!readField(item, key, value)) {
                return false;
            }
        }
        return found_ == everyRequired;
    }

 private:
    static constexpr unsigned everyRequired = 0b1111;

    template <typename T>
    bool required(unsigned bit, const element& json, T& value) {
        found_ |= bit;
        return lorvane::read(json, value);
    }

    bool readField(HistoryItem& item, std::string_view key, const element& value) {
        switch (key.size()) {
        case 2:
            return key != "id" || required(0b0001, value, item.id);
        case 3:
            return key != "raw" || required(0b0010, value, item.raw);
        case 4:
            return key != "text" || required(0b0100, value, item.text);
        case 9:
            return key != "createdAt" || required(0b1000, value, item.createdAt);
        default:
            return readOptional(item, key, value);
        }
    }

    bool readOptional(HistoryItem& item, std::string_view key, const element& value) {
        if (key == "category") {
            return words_.read(value, item.category);
        }
        if (key == "durationSec") {
            return lorvane::read(value, item.durationSec);
        }
        if (key == "device") {
            return words_.read(value, item.device);
        }
        if (key == "sentAt") {
            return lorvane::read(value, item.sentAt);
        }
        if (key == "sentVia") {
            return words_.read(value, item.sentVia);
        }
        return key != "translatedTo" || words_.read(value, item.translatedTo);
    }

    unsigned found_ = 0;
    SharedWords words_;
};

bool read(const element& json, HistoryList& history) {
    simdjson::dom::array items;
    if (json.get(items) != simdjson::SUCCESS) {
        return false;
    }
    ItemReader reader;
    std::vector<HistoryItem> some;
    for (const element& entry : items) {
        if (some.empty()) {
            some.reserve(HistoryList::chunkSize);
        }
        if (!reader.read(entry, some.emplace_back())) {
            return false;
        }
        if (some.size() == HistoryList::chunkSize) {
            history.append(std::exchange(some, {}));
        }
    }
    history.append(std::move(some));
    return true;
}

bool read(const element& json, QSet<QUuid>& ids) {
    simdjson::dom::array entries;
    if (json.get(entries) != simdjson::SUCCESS) {
        return json.is_null();
    }
    for (const element& entry : entries) {
        QUuid id;
        if (!read(entry, id)) {
            return false;
        }
        ids.insert(id);
    }
    return true;
}

std::optional<Backup> readBackup(const element& json) {
    element version;
    element exportedAt;
    element history;
    element deleted;
    Backup backup;
    const bool isWhole = json["version"].get(version) == simdjson::SUCCESS && version.is_number() &&
                         json["exportedAt"].get(exportedAt) == simdjson::SUCCESS &&
                         read(exportedAt, backup.exportedAt) &&
                         json["history"].get(history) == simdjson::SUCCESS && read(history, backup.history);
    const auto noTombstones = json["deleted"].get(deleted);
    if (!isWhole || (noTombstones == simdjson::SUCCESS && !read(deleted, backup.deleted))) {
        return std::nullopt;
    }
    return backup;
}

} // namespace

std::optional<Backup> decodeBackup(const QByteArray& bytes) {
    const bool hasRoom = bytes.capacity() >= bytes.size() + decodingRoom;
    simdjson::dom::parser parser;
    element json;
    if (parser.parse(bytes.constData(), static_cast<std::size_t>(bytes.size()), !hasRoom).get(json) !=
        simdjson::SUCCESS) {
        return std::nullopt;
    }
    return readBackup(json);
}

} // namespace lorvane
