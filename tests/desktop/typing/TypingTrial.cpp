// SPDX-License-Identifier: GPL-3.0-or-later
#include "TypingTrial.h"

#include "support/Corpus.h"
#include "support/ProcessTree.h"

#include <QRegularExpression>

#include <stdexcept>

namespace lorvane {

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

double secondsBetween(SteadyTime from, SteadyTime to) {
    return std::chrono::duration<double>(to - from).count();
}

ScriptedBackend& knowingEveryone(ScriptedBackend& backend) {
    backend.script("/api/register", ScriptedReply::body(R"({"token":"trial"})"));
    return backend;
}

} // namespace

const std::vector<TypingTarget>& typingTargets() {
    static const std::vector<TypingTarget> all{
        {QStringLiteral("mousepad"), QStringLiteral("Mousepad (GTK 3)"),
         [] { return DesktopApp::mousepad(); }},
        {QStringLiteral("gnome-text-editor"), QStringLiteral("GNOME Text Editor (GTK 4)"),
         [] { return DesktopApp::gnomeTextEditor(); }},
        {QStringLiteral("featherpad"), QStringLiteral("FeatherPad (Qt 5)"),
         [] { return DesktopApp::featherpad(); }},
        {QStringLiteral("qt6"), QStringLiteral("QPlainTextEdit (Qt 6)"),
         [] { return DesktopApp::command(QStringLiteral(QT_FIELDS), {}); }},
        {QStringLiteral("writer"), QStringLiteral("LibreOffice Writer"), [] { return DesktopApp::writer(); }},
        {QStringLiteral("chromium"), QStringLiteral("Chromium, text area"),
         [] { return DesktopApp::chromium(); }},
        {QStringLiteral("firefox"), QStringLiteral("Firefox, text area"),
         [] { return DesktopApp::firefox(); }},
        {QStringLiteral("xfce4-terminal"), QStringLiteral("Xfce Terminal (VTE)"),
         [] { return DesktopApp::xfceTerminal(); }, true},
    };
    return all;
}

TypingTrial::TypingTrial(const TypingTarget& target)
    : program_(knowingEveryone(backend_).url().toString()), application_(target.open()) {}

TypingResult TypingTrial::type(const QString& text, const QStringList& pieces,
                               std::chrono::milliseconds between) {
    application_->empty();
    LiveStream stream;
    backend_.scriptAnew("/api/dictate-stream", stream.reply());
    const auto takes = backend_.requests("/api/dictate-stream").size();
    const QString earlier = program_.log();
    hand_.hold(keycode::rightControl, std::chrono::seconds(1)); // a quarter of it tells a hold in KWin
    if (!waitUntil([&] { return backend_.requests("/api/dictate-stream").size() > takes; })) {
        throw std::runtime_error("no take came: " + program_.log().toStdString());
    }
    const double before = processes::processorSeconds(program_.pid());
    const auto begun = std::chrono::steady_clock::now();
    for (const QString& piece : pieces) {
        stream.say(piece);
        if (between.count() > 0) {
            (void)waitUntil([] { return false; }, between);
        }
    }
    program_.forgetPhases();
    stream.finish(text);
    const auto isEnd = [](const QString& phase) {
        return phase == QLatin1String("done") || phase.startsWith(QLatin1String("notice"));
    };
    const bool ended =
        waitUntil([&] { return !program_.phases().isEmpty() && isEnd(program_.phases().last()); },
                  std::chrono::minutes(2));
    if (!ended) {
        throw std::runtime_error("the take does not end: " + program_.log().toStdString());
    }
    const bool handedOver = program_.phases().last().startsWith(QLatin1String("notice"));
    TypingResult result;
    result.characters = static_cast<int>(text.toUcs4().size());
    result.typing = secondsBetween(begun, program_.lastPhaseAt());
    result.afterDone = secondsBetween(stream.finishedAt().value(), program_.lastPhaseAt());
    result.processor = processes::processorSeconds(program_.pid()) - before;
    result.seen = application_->waitForText(text, std::chrono::seconds(5));
    result.wrong = corpus::wrongCharacters(result.seen, text);
    if (!program_.waitForPhase(QStringLiteral("idle"))) {
        throw std::runtime_error("it does not come to rest: " + program_.log().toStdString());
    }
    result.settled = handedOver ? QStringLiteral("handed over")
                                : settled(program_.log().mid(earlier.size()), static_cast<int>(text.size()));
    return result;
}

QString TypingTrial::way() const {
    static const QRegularExpression line(QStringLiteral("takes text by (.+)"));
    const auto found = line.match(program_.log());
    return found.hasMatch() ? found.captured(1) : QString();
}

QString TypingTrial::settled(const QString& log, int characters) {
    static const QRegularExpression halted(
        QStringLiteral("after (\\d+) characters — keeping them and pasting the rest"));
    if (log.contains(QStringLiteral("settle: %1 characters typed live and they are").arg(characters))) {
        return QStringLiteral("typed");
    }
    if (log.contains(QStringLiteral("took back"))) {
        return QStringLiteral("taken back and pasted");
    }
    if (const auto match = halted.match(log); match.hasMatch()) {
        return QStringLiteral("pasted after %1").arg(match.captured(1));
    }
    if (log.contains(QStringLiteral("nothing was typed live"))) {
        return QStringLiteral("pasted");
    }
    return QStringLiteral("typed, the rest at the end");
}

} // namespace lorvane
