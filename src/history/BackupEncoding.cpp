// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/Backup.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace lorvane {

namespace {

/// Writes JSON; `isWhole` tells whether all of it could be written.
class Writer {
 public:
    explicit Writer(qsizetype room) { out_.reserve(room); }

    void raw(std::string_view text) { out_.append(text.data(), static_cast<qsizetype>(text.size())); }

    void string(const QString& text) {
        out_.append('"');
        const QByteArray utf8 = text.toUtf8();
        const char* from = utf8.constData();
        const char* const end = from + utf8.size();
        for (const char* at = from; at != end; ++at) {
            if (static_cast<unsigned char>(*at) < 0x20 || *at == '"' || *at == '\\') {
                out_.append(from, at - from);
                escape(*at);
                from = at + 1;
            }
        }
        out_.append(from, end - from);
        out_.append('"');
    }

    void number(double value) {
        isWhole_ = isWhole_ && std::isfinite(value);
        // The shortest digits that are read as this very double. Large ones get an exponent, since many
        // readers take a row of digits for an integer and have no room for it.
        constexpr double largestPlain = 1e15;
        std::array<char, 32> digits{};
        const auto written =
            std::abs(value) < largestPlain
                ? std::to_chars(digits.begin(), digits.end(), value)
                : std::to_chars(digits.begin(), digits.end(), value, std::chars_format::scientific);
        raw({digits.data(), static_cast<std::size_t>(written.ptr - digits.data())});
    }

    void uuid(const QUuid& id) {
        out_.append('"');
        out_.append(id.toByteArray(QUuid::WithoutBraces).toUpper());
        out_.append('"');
    }

    [[nodiscard]] std::optional<QByteArray> finished() && {
        return isWhole_ ? std::optional(std::move(out_)) : std::nullopt;
    }

 private:
    void escape(char character) {
        constexpr std::string_view plain = "\"\\\b\f\n\r\t";
        constexpr std::string_view names = "\"\\bfnrt";
        constexpr std::string_view digits = "0123456789abcdef";
        out_.append('\\');
        if (const auto at = plain.find(character); at != std::string_view::npos) {
            out_.append(names[at]);
            return;
        }
        out_.append("u00");
        out_.append(digits[static_cast<unsigned char>(character) >> 4]);
        out_.append(digits[static_cast<unsigned char>(character) & 0xF]);
    }

    QByteArray out_;
    bool isWhole_ = true;
};

void writeOptional(Writer& to, std::string_view key, const std::optional<QString>& value) {
    if (value) {
        to.raw(key);
        to.string(*value);
    }
}

void writeOptional(Writer& to, std::string_view key, const std::optional<double>& value) {
    if (value) {
        to.raw(key);
        to.number(*value);
    }
}

void writeItem(Writer& to, const HistoryItem& item) {
    to.raw(R"({"id":)");
    to.uuid(item.id);
    to.raw(R"(,"text":)");
    to.string(item.text);
    to.raw(R"(,"raw":)");
    to.string(item.raw);
    to.raw(R"(,"createdAt":)");
    to.number(item.createdAt.seconds);
    writeOptional(to, R"(,"category":)", item.category);
    writeOptional(to, R"(,"translatedTo":)", item.translatedTo);
    writeOptional(to, R"(,"sentAt":)", item.sentAt ? std::optional(item.sentAt->seconds) : std::nullopt);
    writeOptional(to, R"(,"sentVia":)", item.sentVia);
    writeOptional(to, R"(,"durationSec":)", item.durationSec);
    writeOptional(to, R"(,"device":)", item.device);
    to.raw("}");
}

template <typename Elements, typename Write>
void writeArray(Writer& to, const Elements& elements, Write write) {
    std::string_view separator = "[";
    for (const auto& element : elements) {
        to.raw(separator);
        write(to, element);
        separator = ",";
    }
    to.raw(elements.begin() == elements.end() ? "[]" : "]");
}

qsizetype likelySize(const Backup& backup) {
    constexpr qsizetype fixed = 200;
    constexpr qsizetype perId = 40;
    qsizetype size = fixed + backup.deleted.size() * perId;
    for (const HistoryItem& item : backup.history) {
        size += fixed + item.text.size() + item.raw.size();
    }
    return size;
}

} // namespace

std::optional<QByteArray> encodeBackup(const Backup& backup) {
    Writer to(likelySize(backup));
    to.raw(R"({"version":2,"exportedAt":)");
    to.number(backup.exportedAt.seconds);
    to.raw(R"(,"history":)");
    writeArray(to, backup.history, writeItem);
    to.raw(R"(,"deleted":)");
    writeArray(to, backup.deleted, [](Writer& writer, const QUuid& id) { writer.uuid(id); });
    to.raw("}");
    return std::move(to).finished();
}

} // namespace lorvane
