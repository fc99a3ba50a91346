// SPDX-License-Identifier: GPL-3.0-or-later
#include "LiveTypingDesk.h"

#include "support/Corpus.h"

#include <stdexcept>

namespace lorvane {

namespace {

/// The text, unlike the caret, is known to be there when an editor is handed out.
std::unique_ptr<DesktopApp> withCaretAtEnd(std::unique_ptr<DesktopApp> editor) {
    const auto end = static_cast<int>(editor->text().size());
    if (!editor->select(end, end)) {
        throw std::runtime_error("the caret cannot be put behind the text");
    }
    return editor;
}

std::unique_ptr<DesktopApp> openQtFields(const QString& text) {
    auto window = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    window->tell(QStringLiteral("insert ") + text);
    window->waitForText(text);
    return window;
}

} // namespace

const QString LiveTypingDesk::own = QStringLiteral("My own words — мои. ");
const QString LiveTypingDesk::copied = QStringLiteral("Copied — press Ctrl+V");

void LiveTypingDesk::startProgram(const QJsonObject& preferences) {
    backend.script("/api/register", answer::token(secretToken));
    start(preferences);
}

LiveStream LiveTypingDesk::dictate() {
    const LiveStream stream;
    backend.scriptAnew("/api/dictate-stream", stream.reply());
    const auto before = takes().size();
    holdFor(std::chrono::milliseconds(600));
    EXPECT_TRUE(waitUntil([&] { return takes().size() == before + 1; })) << program->log().toStdString();
    return stream;
}

::testing::AssertionResult LiveTypingDesk::isTyped(const LiveStream& stream, const QString& text,
                                                   const DesktopApp& application) {
    LiveStream(stream).say(corpus::fragments(text));
    return holds(application, own + text);
}

::testing::AssertionResult LiveTypingDesk::holds(const DesktopApp& application, const QString& text) {
    const QString seen = application.waitForText(text);
    if (seen == text) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "it holds\n"
                                         << seen.toStdString() << "\ninstead of\n"
                                         << text.toStdString();
}

::testing::AssertionResult LiveTypingDesk::logs(const QString& part) const {
    if (waitUntil([&] { return program->log().contains(part); })) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "not in its log: " << part.toStdString() << "\n"
                                         << program->log().toStdString();
}

::testing::AssertionResult LiveTypingDesk::endsIn(const QString& notice) {
    return goesThrough({QStringLiteral("recording"), QStringLiteral("processing"), noticePhase(notice),
                        QStringLiteral("idle")});
}

std::ostream& operator<<(std::ostream& out, const Application& application) {
    return out << application.name;
}

std::string nameOf(const ::testing::TestParamInfo<Application>& parameter) { return parameter.param.name; }

namespace application {
const Application mousepad{"mousepad",
                           [](const QString& text) { return withCaretAtEnd(DesktopApp::mousepad(text)); }};
const Application gnomeTextEditor{"gnome_text_editor", [](const QString& text) {
                                      return withCaretAtEnd(DesktopApp::gnomeTextEditor(text));
                                  }};
const Application featherpad{
    "featherpad", [](const QString& text) { return withCaretAtEnd(DesktopApp::featherpad(text)); }};
const Application qtFields{"qt_fields", openQtFields};
const Application writer{"writer", [](const QString& text) { return DesktopApp::writer(text); }};
const Application chromium{"chromium", [](const QString& text) { return DesktopApp::chromium(text); }};
const Application firefox{"firefox", [](const QString& text) { return DesktopApp::firefox(text); }};
} // namespace application

} // namespace lorvane
