// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/SelectionReader.h"

#include "platform/linux/clipboard/ContentTypes.h"

#include <QSet>

#include <cstring>
#include <vector>

namespace lorvane {

namespace {

constexpr Duration patience = seconds(0.5);
constexpr Duration longest = seconds(3);
constexpr int mostAttempts = 3;
constexpr qsizetype mostTargets = 1024;
const QString targetsName = QStringLiteral("TARGETS");

bool isEnd(ConversionOutcome outcome) {
    return outcome != ConversionOutcome::data && outcome != ConversionOutcome::refused;
}

} // namespace

SelectionReader::SelectionReader(XcbConnection& connection, ReadingWindows& windows, Clock& clock,
                                 const QString& selection)
    : connection_(connection), windows_(windows), clock_(clock), selection_(connection.atom(selection)) {}

QCoro::Task<SelectionRead> SelectionReader::readAll(qsizetype mostBytes, TaskScope scope) {
    const Progress start{clock_.now() + longest, mostBytes, 0};
    for (int count = 0; count < mostAttempts; ++count) {
        if (connection_.ownerOf(selection_) == XCB_WINDOW_NONE) {
            SelectionRead nothing;
            co_return nothing;
        }
        const Attempt result = co_await attempt(start, scope);
        if (result.outcome == ConversionOutcome::data) {
            SelectionRead read;
            read.content = result.content;
            co_return read;
        }
        if (result.outcome != ConversionOutcome::ownerChanged) {
            break;
        }
    }
    SelectionRead unreadable;
    unreadable.readable = false;
    co_return unreadable;
}

QCoro::Task<SelectionReader::Attempt> SelectionReader::attempt(Progress progress, TaskScope scope) {
    ReadingWindow window(windows_);
    Attempt result;
    const Converted targets = co_await convert(window.id(), targetsName, progress, scope);
    // An owner of old conventions that cannot list its types has at most a text.
    QStringList types = {contenttypes::utf8, contenttypes::latin1};
    if (targets.outcome == ConversionOutcome::data) {
        types = contentTypes(targets.content.bytes);
    }
    result.outcome = targets.outcome;
    for (qsizetype i = 0; i < types.size() && !isEnd(result.outcome); ++i) {
        Converted converted = co_await convert(window.id(), types[i], progress, scope);
        result.outcome = converted.outcome;
        const bool isKept = !converted.content.bytes.isEmpty() || contenttypes::isMarker(types[i]);
        if (converted.outcome == ConversionOutcome::data && isKept) {
            progress.room -= converted.content.bytes.size();
            result.content.types.append(std::move(converted.content));
        }
    }
    if (!isEnd(result.outcome)) {
        window.markClean();
        result.outcome = ConversionOutcome::data;
    }
    co_return result;
}

QCoro::Task<std::optional<QString>> SelectionReader::readText(qsizetype mostBytes, TaskScope scope) {
    const Progress start{clock_.now() + longest, mostBytes, 0};
    Attempt result;
    result.outcome = ConversionOutcome::ownerChanged;
    for (int count = 0; count < mostAttempts && result.outcome == ConversionOutcome::ownerChanged; ++count) {
        result = co_await attemptText(start, scope);
    }
    co_return result.content.text();
}

QCoro::Task<SelectionReader::Attempt> SelectionReader::attemptText(Progress progress, TaskScope scope) {
    ReadingWindow window(windows_);
    Attempt result;
    result.outcome = ConversionOutcome::refused;
    const QStringList types = {contenttypes::utf8, contenttypes::plainUtf8, contenttypes::latin1};
    for (qsizetype i = 0; i < types.size() && result.outcome == ConversionOutcome::refused; ++i) {
        Converted converted = co_await convert(window.id(), types[i], progress, scope);
        result.outcome = converted.outcome;
        if (converted.outcome == ConversionOutcome::data) {
            result.content.types.append(std::move(converted.content));
        }
    }
    if (!isEnd(result.outcome)) {
        window.markClean();
    }
    co_return result;
}

QCoro::Task<SelectionReader::Converted> SelectionReader::convert(xcb_window_t window, QString type,
                                                                 Progress& progress, TaskScope scope) {
    const ConversionRequest request{window,   selection_,   connection_.atom(type), progress.room,
                                    patience, progress.end, progress.since};
    SelectionConversion conversion(connection_, clock_, request);
    const auto done = conversion.start();
    if (progress.since == 0) {
        progress.since = conversion.number();
    }
    Converted result;
    result.outcome = co_await done.wait(scope);
    if (result.outcome == ConversionOutcome::data) {
        const auto& content = conversion.content();
        const int format = content.format == 16 || content.format == 32 ? content.format : 8;
        result.content = {type, content.bytes, connection_.atomNames({content.type}).value(0), format};
    }
    co_return result;
}

QStringList SelectionReader::contentTypes(const QByteArray& targets) {
    const qsizetype count =
        std::min(targets.size() / static_cast<qsizetype>(sizeof(xcb_atom_t)), mostTargets);
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(count));
    std::memcpy(atoms.data(), targets.constData(), atoms.size() * sizeof(xcb_atom_t));
    QStringList types;
    QSet<QString> known;
    for (const auto& name : connection_.atomNames(atoms)) {
        if (contenttypes::isContent(name) && !known.contains(name)) {
            known.insert(name);
            types.append(name);
        }
    }
    return types;
}

} // namespace lorvane
