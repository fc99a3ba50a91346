// SPDX-License-Identifier: GPL-3.0-or-later
// What stays of a dictation on the disk.
#include "DictationDesk.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace lorvane {

namespace {

class History : public DictationDesk {
 protected:
    [[nodiscard]] QJsonObject file() const {
        QFile found(program->historyFile());
        return found.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(found.readAll()).object()
                                               : QJsonObject();
    }
    [[nodiscard]] QJsonArray items() const { return file().value(QStringLiteral("history")).toArray(); }
    [[nodiscard]] QStringList texts() const {
        QStringList found;
        for (const QJsonValue& item : items()) {
            found.append(item.toObject().value(QStringLiteral("text")).toString());
        }
        return found;
    }
    /// Whether the file comes to hold these texts, the newest first.
    [[nodiscard]] ::testing::AssertionResult holds(const QStringList& wanted) const {
        if (waitUntil([&] { return texts() == wanted; })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure()
               << "it holds: " << texts().join(QStringLiteral(" | ")).toStdString();
    }
    /// One dictation with this text, wherever it goes.
    void dictate(const QString& text, const QString& ending = QStringLiteral("idle")) {
        backend.scriptAnew("/api/dictate-stream", answer::done(text));
        program->forgetPhases();
        holdFor();
        ASSERT_TRUE(waitUntil([&] { return program->phases().contains(QStringLiteral("processing")); }))
            << program->phases().join(QStringLiteral(", ")).toStdString() << "\n"
            << program->log().toStdString() << program->output().toStdString();
        ASSERT_TRUE(program->waitForPhase(ending)) << program->log().toStdString();
    }
};

const QString first = QString::fromUtf8("First: \"Привет\" — 🎙.");
const QString second = QStringLiteral("Second.");

TEST_F(History, ATakeStandsInTheFileWithAllItsFields) {
    const auto editor = DesktopApp::mousepad();
    startHearing(first);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    holdFor();
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_TRUE(holds({first}));
    const QJsonObject item = items()[0].toObject();
    EXPECT_EQ(item.keys(), (QStringList{QStringLiteral("createdAt"), QStringLiteral("device"),
                                        QStringLiteral("durationSec"), QStringLiteral("id"),
                                        QStringLiteral("raw"), QStringLiteral("text")}));
    EXPECT_EQ(item.value(QStringLiteral("device")).toString(), QStringLiteral("mac"));
    EXPECT_EQ(item.value(QStringLiteral("raw")).toString(), first);
    EXPECT_NEAR(item.value(QStringLiteral("durationSec")).toDouble(), 1.0, 0.5);
    constexpr double from1970To2001 = 978'307'200;
    EXPECT_NEAR(item.value(QStringLiteral("createdAt")).toDouble() + from1970To2001,
                static_cast<double>(before), 30);
    const QRegularExpression uuid(QStringLiteral("^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"));
    EXPECT_TRUE(uuid.match(item.value(QStringLiteral("id")).toString()).hasMatch());
    EXPECT_EQ(file().value(QStringLiteral("version")).toInt(), 2);
    EXPECT_EQ(file().value(QStringLiteral("deleted")), QJsonValue(QJsonArray()));
    EXPECT_EQ(QFile::permissions(program->historyFile()) & QFile::Permissions(0x77), QFile::Permissions());
}

TEST_F(History, SurvivesARestartAndAKillAndGrowsAtTheFront) {
    const auto editor = DesktopApp::mousepad();
    startHearing(first);
    dictate(first);
    ASSERT_TRUE(holds({first}));
    const QJsonValue kept = items()[0];
    program->restart();
    dictate(second);
    ASSERT_TRUE(holds({second, first}));
    EXPECT_EQ(items()[1], kept);
    program->kill();
    program->restart();
    dictate(QStringLiteral("third"));
    EXPECT_TRUE(holds({QStringLiteral("third"), second, first}));
    EXPECT_EQ(items()[2], kept);
}

TEST_F(History, ATakeIntoAPasswordFieldIsKept) {
    const auto window = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    window->tell(QStringLiteral("focus 2"));
    ASSERT_TRUE(waitUntil([&] {
        const auto field = window->field();
        return field && field->value(QStringLiteral("password")).toBool();
    }));
    startHearing(first);
    dictate(first, QStringLiteral("notice"));
    EXPECT_EQ(program->property(QStringLiteral("Notice")), QStringLiteral("Password field — not inserted"));
    EXPECT_TRUE(holds({first}));
}

TEST_F(History, ATakeThatIsHandedOverOnTheClipboardIsKept) {
    const auto editor = DesktopApp::mousepad();
    startHearing(first);
    editor->hang();
    dictate(first, QStringLiteral("notice"));
    EXPECT_EQ(program->property(QStringLiteral("Notice")), QStringLiteral("Copied — press Ctrl+V"));
    EXPECT_TRUE(holds({first}));
    editor->wake();
}

TEST_F(History, ATakeWithoutSpeechIsNotKept) {
    const auto editor = DesktopApp::mousepad();
    startHearing(first);
    dictate(QStringLiteral("  "), QStringLiteral("notice"));
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    dictate(second);
    EXPECT_TRUE(holds({second}));
}

TEST_F(History, AFileThatDoesNotDecodeIsSetAsideByTheFirstTake) {
    const auto editor = DesktopApp::mousepad();
    startHearing(first);
    const QByteArray bad = R"({"version":2,"exportedAt":1,"history":[{"id":)";
    QFile spoilt(program->historyFile());
    ASSERT_TRUE(spoilt.open(QIODevice::WriteOnly) && spoilt.write(bad) == bad.size());
    spoilt.close();
    program->restart();
    dictate(first);
    ASSERT_TRUE(holds({first}));
    QFile aside(program->historyFile() + QStringLiteral(".unreadable"));
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), bad);
}

} // namespace

} // namespace lorvane
