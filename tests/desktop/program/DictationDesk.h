// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/DesktopApps.h"
#include "support/LiveStream.h"
#include "support/LorvaneProgram.h"
#include "support/PhysicalKeyboard.h"
#include "support/ScriptedBackend.h"

#include <gtest/gtest.h>

#include <memory>

namespace lorvane {

/// What a scripted backend says.
namespace answer {
ScriptedReply token(const QString& token);
/// The stream's last line with the whole text.
ScriptedReply done(const QString& text);
/// A stream that brings the text in pieces, with this time after each, and ends with `text`.
ScriptedReply stream(const QStringList& deltas, const QString& text,
                     std::chrono::milliseconds betweenPieces = std::chrono::milliseconds(0));
/// A stream that tells of a failure.
ScriptedReply error(const QString& name);
/// The answer of the upload in one piece.
ScriptedReply response(const QString& text);
ScriptedReply status(int status);
ScriptedReply never();
} // namespace answer

/// A take as it went to the backend.
struct SentTake {
    explicit SentTake(const RecordedRequest& request);
    QString id;
    QByteArray token;
    QJsonObject fields;
    QByteArray audio;
};

/// A user at the virtual desktop, the program, and the backend that it is told to use.
class DictationDesk : public ::testing::Test {
 protected:
    static constexpr int holdKey = keycode::rightControl;
    static constexpr int handsFreeKey = keycode::rightAlt;
    static const QStringList delivered; // recording, processing, done, idle
    static const QStringList dropped;   // recording, idle
    /// What a tap of the hold key goes through: in KWin, where it may be any command, nothing.
    static QStringList tapped();
    static const QString secretToken;

    /// The program with a backend that knows everyone and hears `text` in every take.
    void startHearing(const QString& text, const QJsonObject& preferences = {});
    /// The program with the backend as it is scripted.
    void start(const QJsonObject& preferences = {});
    void holdFor(std::chrono::milliseconds time = std::chrono::seconds(1)) { hand.hold(holdKey, time); }
    void tapHandsFree() { hand.hold(handsFreeKey, std::chrono::milliseconds(100)); }
    /// Keeps everything as it is for the length of a user's gesture.
    static void stay(std::chrono::milliseconds time);

    /// Whether the program went through exactly these phases since the start or the last call of this; says
    /// what it went through instead.
    ::testing::AssertionResult goesThrough(const QStringList& phases,
                                           std::chrono::milliseconds bound = generously);
    /// The takes that went to the stream, in order.
    [[nodiscard]] std::vector<SentTake> takes() const;
    /// What the program keeps of its registration; empty when it has none.
    [[nodiscard]] QString storedToken() const;
    [[nodiscard]] static QString noticePhase(const QString& text);

    PhysicalKeyboard hand;
    ScriptedBackend backend;
    std::unique_ptr<LorvaneProgram> program;
};

/// The clipboard as other programs see it.
namespace clipboard {
/// What is on it as this type; empty when it is not.
QByteArray read(const QString& type = QStringLiteral("UTF8_STRING"));
QStringList types();

/// Something that another program has copied; that program lasts until it loses the clipboard or this goes.
class Copy {
 public:
    explicit Copy(const QByteArray& content, const QString& type = QStringLiteral("UTF8_STRING"));
    ~Copy();
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    [[nodiscard]] bool isOwner() const { return process_.state() == QProcess::Running; }

 private:
    void start(const QByteArray& content, const QString& type);

    QProcess process_;
};
} // namespace clipboard

} // namespace lorvane
