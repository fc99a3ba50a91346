// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/TakeEncoder.h"

#include "audio/PCMConverter.h"
#include "base/Dates.h"
#include "base/PreferenceCatalogue.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QtEndian>

namespace lorvane {

namespace {

constexpr TakeSettings aac{.format = TakeFormat::aac, .bitRate = 32'000};
constexpr TakeSettings flac{.format = TakeFormat::flac, .bitDepth = 16};
constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QString codecName(const TakeSettings& settings) {
    return settings.format == TakeFormat::aac ? QStringLiteral("aac") : QStringLiteral("flac");
}

QString extension(const TakeSettings& settings) {
    return settings.format == TakeFormat::aac ? QStringLiteral("m4a") : QStringLiteral("flac");
}

template <typename Number>
void appendLittleEndian(QByteArray& bytes, Number number) {
    const Number ordered = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
}

// An empty file holds no take.
bool isUsable(const std::optional<QByteArray>& file, const QByteArray& pcm) {
    return file && !file->isEmpty() && file->size() < pcm.size();
}

} // namespace

TakeFolders TakeFolders::system() {
    return {QDir::tempPath(), QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)};
}

TakeEncoder::TakeEncoder(const Foundation& foundation, TakeCodec& codec, TakeFolders folders)
    : foundation_(foundation), codec_(codec), folders_(std::move(folders)) {}

std::optional<Take> TakeEncoder::encodeTake(const QByteArray& pcm) const {
    if (pcm.size() < minimumBytes) {
        return std::nullopt;
    }
    dumpTake(pcm, QStringLiteral("part"));
    if (const auto file = encodeFile(pcm, aac); isUsable(file, pcm)) {
        return Take{*file, extension(aac)};
    }
    foundation_.log.diagLog(QStringLiteral("[tirra-encode] aac unavailable — falling back to flac"));
    if (const auto file = encodeFile(pcm, flac); isUsable(file, pcm)) {
        return Take{*file, extension(flac)};
    }
    foundation_.log.diagLog(QStringLiteral("[tirra-encode] flac unavailable — sending wav (") +
                            QString::number(pcm.size()) + QStringLiteral(" bytes)"));
    return Take{makeWav(pcm), QStringLiteral("wav")};
}

QByteArray TakeEncoder::makeWav(const QByteArray& pcm) {
    constexpr auto rate = static_cast<quint32>(captureRate);
    constexpr auto frameBytes = static_cast<quint16>(captureBytesPerFrame);
    const auto count = static_cast<quint32>(pcm.size());
    QByteArray wav;
    wav.reserve(44 + pcm.size());
    wav.append("RIFF");
    appendLittleEndian<quint32>(wav, count + 36);
    wav.append("WAVEfmt ");
    appendLittleEndian<quint32>(wav, 16);
    appendLittleEndian<quint16>(wav, 1); // linear PCM
    appendLittleEndian<quint16>(wav, 1); // channels
    appendLittleEndian<quint32>(wav, rate);
    appendLittleEndian<quint32>(wav, rate * frameBytes);
    appendLittleEndian<quint16>(wav, frameBytes);
    appendLittleEndian<quint16>(wav, 16); // bits a sample
    wav.append("data");
    appendLittleEndian<quint32>(wav, count);
    return wav.append(pcm);
}

void TakeEncoder::dumpTake(const QByteArray& pcm, const QString& label) const {
    if (!foundation_.preferences.get(preference::dumpTakes) || pcm.size() < minimumBytes ||
        folders_.downloads.isEmpty()) {
        return;
    }
    const QByteArray wav = makeWav(pcm);
    const auto now = foundation_.clock.wallNow().time_since_epoch();
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(now).count();
    const QString name =
        QStringLiteral("tirra-") + label + u'-' + QString::number(milliseconds) + QStringLiteral(".wav");
    QFile file(QDir(folders_.downloads).filePath(name));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(wav);
    }
    foundation_.log.diagLog(QStringLiteral("dumped ") + label + QStringLiteral(" → ") + name +
                            QStringLiteral(" (") + QString::number(wav.size()) + QStringLiteral(" bytes)"));
}

std::optional<QByteArray> TakeEncoder::encodeFile(const QByteArray& pcm, const TakeSettings& settings) const {
    // An odd byte at the end is no sample.
    const QByteArray samples = pcm.first(pcm.size() - pcm.size() % captureBytesPerFrame);
    if (samples.isEmpty()) {
        return std::nullopt;
    }
    const QString path =
        QDir(folders_.temporary).filePath(QStringLiteral("tirra-") + newUuid() + u'.' + extension(settings));
    auto file = writeAndRead(samples, settings, path);
    QFile::remove(path);
    if (!file) {
        foundation_.log.diagLog(QStringLiteral("[tirra-encode] ") + codecName(settings) +
                                QStringLiteral(" failed: ") + file.error());
        return std::nullopt;
    }
    return std::move(*file);
}

Result<QByteArray, QString> TakeEncoder::writeAndRead(const QByteArray& samples, const TakeSettings& settings,
                                                      const QString& path) const {
    QFile file(path);
    // Made first, so that nobody else ever reads what was said.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, ownerOnly)) {
        return failure(file.errorString());
    }
    file.close();
    if (auto written = codec_.writeFile(samples, settings, path); !written) {
        return failure(std::move(written.error()));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(file.errorString());
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return failure(file.errorString());
    }
    return bytes;
}

} // namespace lorvane
