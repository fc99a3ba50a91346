// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"

#include <set>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString heard = QStringLiteral("A sentence that nobody may log.");
const QStringList taken{QStringLiteral("recording"), QStringLiteral("processing")};

class Failures : public DictationDesk {
 protected:
    void script(const QByteArray& path, ScriptedReply reply) { backend.script(path, std::move(reply)); }
    void registers() { script("/api/register", answer::token(secretToken)); }
    void dictate() { holdFor(milliseconds(600)); }
    /// The phases of a take that ends in this notice.
    static QStringList endsIn(const QString& notice) {
        return taken + QStringList{noticePhase(notice), QStringLiteral("idle")};
    }
    /// The stream breaks after its first fragment.
    static ScriptedReply brokenStream() {
        ScriptedReply reply = answer::done(heard);
        reply.pieces = {R"({"type":"delta","text":"A sentence"})"
                        "\n",
                        reply.pieces.front()};
        reply.dropAfter = reply.pieces.front().size();
        return reply;
    }
};

TEST_F(Failures, AStreamThatBreaksIsTakenOverByTheUploadInOnePiece) {
    registers();
    script("/api/dictate-stream", brokenStream());
    script("/api/dictate", answer::response(heard));
    const auto editor = DesktopApp::mousepad();
    start();
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    ASSERT_EQ(takes().size(), 1U);
    const auto uploads = backend.requests("/api/dictate");
    ASSERT_EQ(uploads.size(), 1U);
    const SentTake upload(uploads[0]);
    EXPECT_EQ(upload.id, takes()[0].id);
    EXPECT_EQ(upload.fields, takes()[0].fields);
    EXPECT_TRUE(upload.audio == takes()[0].audio);
}

TEST_F(Failures, AnAbsentBackendIsToldWithinItsTimeAndTheNextTakeWorksOnceItIsThere) {
    auto later = std::make_unique<ScriptedBackend>();
    const int port = later->port();
    later.reset();
    program = std::make_unique<LorvaneProgram>(QStringLiteral("http://127.0.0.1:%1").arg(port));
    dictate();
    constexpr std::chrono::seconds registrationTimeOut{15};
    EXPECT_TRUE(
        goesThrough(endsIn(QStringLiteral("Couldn't reach the Lorvane backend. Check your connection.")),
                    registrationTimeOut));

    later = std::make_unique<ScriptedBackend>(port);
    later->script("/api/register", answer::token(secretToken));
    later->script("/api/dictate-stream", answer::done(heard));
    const auto editor = DesktopApp::mousepad();
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Failures, ABackendThatGoesAwayAfterTheRegistrationIsToldAtOnce) {
    auto leaving = std::make_unique<ScriptedBackend>();
    leaving->script("/api/register", answer::token(secretToken));
    program = std::make_unique<LorvaneProgram>(leaving->url().toString());
    ASSERT_TRUE(waitUntil([&] { return !leaving->requests("/api/register").empty(); }));
    ASSERT_TRUE(waitUntil([&] { return storedToken() == secretToken; }));
    leaving.reset();
    dictate();
    EXPECT_TRUE(goesThrough(endsIn(QStringLiteral("Try again"))));
}

TEST_F(Failures, ATooLongTakeIsToldForSixSeconds) {
    registers();
    script("/api/dictate-stream", answer::status(413));
    start();
    dictate();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("notice")));
    stay(milliseconds(4500));
    EXPECT_EQ(program->phase(), QStringLiteral("notice"));
    EXPECT_TRUE(goesThrough(
        endsIn(QStringLiteral("That recording is too long to send in one go. Try shorter takes."))));
    EXPECT_EQ(takes().size(), 1U) << "it was sent again";
}

TEST_F(Failures, SilenceIsToldByTheStreamsOwnLine) {
    registers();
    script("/api/dictate-stream", answer::error(QStringLiteral("no_speech")));
    start();
    dictate();
    EXPECT_TRUE(goesThrough(endsIn(QStringLiteral("Didn't catch any speech — try again."))));
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Failures, SilenceIsToldByTheStatusOfTheUpload) {
    registers();
    script("/api/dictate-stream", brokenStream());
    script("/api/dictate", answer::status(422));
    start();
    dictate();
    EXPECT_TRUE(goesThrough(endsIn(QStringLiteral("Didn't catch any speech — try again."))));
}

TEST_F(Failures, TooManyTakesAreToldByTheStreamsOwnLine) {
    registers();
    script("/api/dictate-stream", answer::error(QStringLiteral("dictate_limit")));
    start();
    dictate();
    EXPECT_TRUE(
        goesThrough(endsIn(QStringLiteral("Too many dictations right now. Please try again later."))));
}

TEST_F(Failures, TooManyTakesAreToldByTheStatusOfTheUpload) {
    registers();
    script("/api/dictate-stream", brokenStream());
    script("/api/dictate", answer::status(429));
    start();
    dictate();
    EXPECT_TRUE(
        goesThrough(endsIn(QStringLiteral("Too many dictations right now. Please try again later."))));
}

TEST_F(Failures, AFailingServerIsAskedThreeTimesWithNewTakeIds) {
    registers();
    for (int attempt = 0; attempt < 3; ++attempt) {
        script("/api/dictate-stream", answer::status(500));
    }
    script("/api/dictate-stream", answer::done(heard));
    start();
    dictate();
    EXPECT_TRUE(goesThrough(endsIn(QStringLiteral("Lorvane had a hiccup. Please try again."))));
    const std::vector<SentTake> sent = takes();
    ASSERT_EQ(sent.size(), 3U);
    EXPECT_EQ(std::set<QString>({sent[0].id, sent[1].id, sent[2].id}).size(), 3U);
    EXPECT_TRUE(sent[0].audio == sent[2].audio);
    const auto requests = backend.requests("/api/dictate-stream");
    EXPECT_GE(requests[1].arrived - requests[0].arrived, milliseconds(1200));
    EXPECT_GE(requests[2].arrived - requests[1].arrived, milliseconds(2400));

    const auto editor = DesktopApp::mousepad();
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Failures, ARejectedTokenIsReplacedAndTheTakeRepeatedOnce) {
    const QString second = QStringLiteral("the-second-token");
    script("/api/register", answer::token(secretToken));
    script("/api/register", answer::token(second));
    script("/api/dictate-stream", answer::status(401));
    script("/api/dictate-stream", answer::done(heard));
    const auto editor = DesktopApp::mousepad();
    start();
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(backend.requests("/api/register").size(), 2U);
    const std::vector<SentTake> sent = takes();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].token, "Bearer " + secretToken.toUtf8());
    EXPECT_EQ(sent[1].token, "Bearer " + second.toUtf8());
    EXPECT_EQ(sent[1].id, sent[0].id);
}

TEST_F(Failures, NeitherTokenNorTextIsEverLogged) {
    registers();
    script("/api/dictate-stream", brokenStream());
    script("/api/dictate-stream", answer::status(500));
    script("/api/dictate-stream", answer::status(401));
    script("/api/dictate-stream", answer::done(heard));
    script("/api/dictate", answer::response(heard));
    const auto editor = DesktopApp::mousepad();
    start();
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    dictate();
    EXPECT_TRUE(goesThrough(delivered));
    const QString twice = heard + heard;
    EXPECT_EQ(editor->waitForText(twice), twice);
    EXPECT_EQ(program->run({QStringLiteral("quit")}), 0);
    ASSERT_TRUE(waitUntil([&] { return !program->isRunning(); }));
    const QString log = program->log();
    const QString said = program->output();
    EXPECT_TRUE(log.contains(QStringLiteral("stream dropped"))) << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("retry 1"))) << log.toStdString();
    for (const QString& all : {log, said}) {
        EXPECT_FALSE(all.contains(secretToken)) << all.toStdString();
        EXPECT_FALSE(all.contains(heard.left(10))) << all.toStdString();
    }
}

} // namespace

} // namespace lorvane
