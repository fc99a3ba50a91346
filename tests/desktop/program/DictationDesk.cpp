// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"

#include "support/UserSession.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QtEndian>

#include <ostream>
#include <stdexcept>

namespace lorvane {

namespace {

QByteArray json(const QJsonObject& object) { return QJsonDocument(object).toJson(QJsonDocument::Compact); }

const QString typeKey = QStringLiteral("type");
const QString textKey = QStringLiteral("text");
const QString rawKey = QStringLiteral("raw");

} // namespace

namespace answer {

ScriptedReply token(const QString& token) {
    return ScriptedReply::body(json({{QStringLiteral("token"), token}}));
}

ScriptedReply done(const QString& text) { return stream({}, text); }

ScriptedReply stream(const QStringList& deltas, const QString& text,
                     std::chrono::milliseconds betweenPieces) {
    ScriptedReply reply;
    for (const QString& delta : deltas) {
        reply.pieces.push_back(streamLine::delta(delta));
    }
    reply.pieces.push_back(streamLine::done(text));
    reply.betweenPieces = betweenPieces;
    return reply;
}

ScriptedReply error(const QString& name) {
    return ScriptedReply::lines(
        {json({{typeKey, QStringLiteral("error")}, {QStringLiteral("error"), name}})});
}

ScriptedReply response(const QString& text) {
    return ScriptedReply::body(json({{textKey, text}, {rawKey, text}}));
}

ScriptedReply status(int status) { return ScriptedReply::body("{}", status); }

ScriptedReply never() {
    ScriptedReply reply;
    reply.neverAnswers = true;
    return reply;
}

} // namespace answer

SentTake::SentTake(const RecordedRequest& request) {
    const auto header = [&](const char* name) {
        const auto found = request.headers.find(name);
        return found == request.headers.end() ? QByteArray() : found->second;
    };
    id = QString::fromLatin1(header("x-tirra-take"));
    token = header("authorization");
    if (request.body.size() >= 4) {
        const auto length = static_cast<qsizetype>(qFromBigEndian<quint32>(request.body.constData()));
        fields = QJsonDocument::fromJson(request.body.mid(4, length)).object();
        audio = request.body.mid(4 + length);
    }
}

const QStringList DictationDesk::delivered{QStringLiteral("recording"), QStringLiteral("processing"),
                                           QStringLiteral("done"), QStringLiteral("idle")};
const QStringList DictationDesk::dropped{QStringLiteral("recording"), QStringLiteral("idle")};
const QString DictationDesk::secretToken = QStringLiteral("token-that-nobody-may-read");

QStringList DictationDesk::tapped() {
    return session::name() == QLatin1String("kwin") ? QStringList() : dropped;
}

void DictationDesk::startHearing(const QString& text, const QJsonObject& preferences) {
    backend.script("/api/register", answer::token(secretToken));
    backend.script("/api/dictate-stream", answer::done(text));
    start(preferences);
}

void DictationDesk::start(const QJsonObject& preferences) {
    program = std::make_unique<LorvaneProgram>(backend.url().toString(), preferences);
}

void DictationDesk::stay(std::chrono::milliseconds time) {
    QElapsedTimer elapsed;
    elapsed.start();
    (void)waitUntil([&] { return elapsed.hasExpired(time.count()); }, time * 2);
}

::testing::AssertionResult DictationDesk::goesThrough(const QStringList& phases,
                                                      std::chrono::milliseconds bound) {
    const bool good = program->waitForPhases(phases, bound);
    const QStringList seen = program->phases();
    program->forgetPhases();
    if (good) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "it went through: " << seen.join(QStringLiteral(", ")).toStdString() << "\nits log:\n"
           << program->log().toStdString();
}

std::vector<SentTake> DictationDesk::takes() const {
    std::vector<SentTake> found;
    for (const RecordedRequest& request : backend.requests("/api/dictate-stream")) {
        found.emplace_back(request);
    }
    return found;
}

QString DictationDesk::storedToken() const {
    QFile file(program->preferencesFile());
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QJsonDocument::fromJson(file.readAll())
        .object()
        .value(QStringLiteral("tirra.mac.token"))
        .toString();
}

QString DictationDesk::noticePhase(const QString& text) { return QStringLiteral("notice: ") + text; }

namespace clipboard {

namespace {

/// A Wayland client reaches the clipboard without the focus by data control alone, which GNOME does not have:
/// there as under X11, an X client does.
bool isByDataControl() { return session::isWayland() && session::name() != QStringLiteral("gnome"); }

const QStringList xSelection{QStringLiteral("-selection"), QStringLiteral("clipboard")};

QStringList toRead(const QString& type) {
    if (isByDataControl()) {
        return {QStringLiteral("wl-paste"), QStringLiteral("--no-newline"), QStringLiteral("--type"), type};
    }
    return QStringList{QStringLiteral("xclip")} + xSelection +
           QStringList{QStringLiteral("-o"), QStringLiteral("-t"), type};
}

/// In the foreground, until something else is copied.
QStringList toCopy(const QString& type) {
    if (isByDataControl()) {
        return {QStringLiteral("wl-copy"), QStringLiteral("--foreground"), QStringLiteral("--type"), type};
    }
    return QStringList{QStringLiteral("xclip")} + xSelection +
           QStringList{QStringLiteral("-quiet"), QStringLiteral("-i"), QStringLiteral("-t"), type};
}

QByteArray outputOf(const QStringList& command) { return runTool(command.first(), command.mid(1)).output; }

} // namespace

QByteArray read(const QString& type) { return outputOf(toRead(type)); }

QStringList types() {
    const QByteArray listed = isByDataControl()
                                  ? outputOf({QStringLiteral("wl-paste"), QStringLiteral("--list-types")})
                                  : read(QStringLiteral("TARGETS"));
    return QString::fromUtf8(listed).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

Copy::Copy(const QByteArray& content, const QString& type) {
    // GNOME Shell takes the clipboard over when its last owner has ended, and may be late with it.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts && !isOwner(); ++attempt) {
        start(content, type);
    }
    if (!isOwner()) {
        throw std::runtime_error(process_.program().toStdString() +
                                 " did not take the clipboard: " + process_.readAll().toStdString());
    }
}

void Copy::start(const QByteArray& content, const QString& type) {
    const QStringList command = toCopy(type);
    process_.start(command.first(), command.mid(1));
    process_.write(content);
    process_.closeWriteChannel();
    const auto isSettled = [&] { return read(type) == content && session::compositorHasCopied(type); };
    if (!process_.waitForStarted() || !waitUntil([&] { return !isOwner() || isSettled(); })) {
        process_.kill();
    }
    (void)process_.waitForFinished(0); // else an end that has just come is not known yet
}

Copy::~Copy() {
    process_.kill();
    process_.waitForFinished();
}

} // namespace clipboard

} // namespace lorvane
