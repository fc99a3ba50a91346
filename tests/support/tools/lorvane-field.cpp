// SPDX-License-Identifier: GPL-3.0-or-later
// Reads the focused field of another program through accessibility, and puts its caret somewhere.
#include "support/FieldReader.h"
#include "support/Wait.h"
#include "support/Windows.h"

#include <chrono>
#include <cstdio>
#include <exception>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>

using lorvane::FieldReader;
using lorvane::ShownField;

namespace {

constexpr int misuse = 2;

struct Asked {
    qint64 pid; // 0: whose window is active
    double seconds;
    bool alsoResting;
    bool document;
};

// Any answer that is there within the time; accessibility tells of a new field by events only to those that
// listened before it came, so this asks again and again.
std::optional<ShownField> waitForField(const FieldReader& reader, const Asked& wanted) {
    std::optional<ShownField> reading;
    const auto isThere = [&] {
        const qint64 pid = wanted.pid != 0 ? wanted.pid : lorvane::windows::active().pid;
        reading = pid == 0 ? std::nullopt : wanted.document ? reader.document(pid) : reader.focused(pid);
        if (!reading && pid != 0 && wanted.alsoResting)
            reading = reader.resting(pid);
        return reading.has_value();
    };
    (void)lorvane::waitUntil(isThere, std::chrono::milliseconds(static_cast<qint64>(wanted.seconds * 1000)));
    return reading;
}

int show(const FieldReader& reader, const QString& verb, const Asked& wanted) {
    const auto reading = waitForField(reader, wanted);
    if (!reading) {
        std::fputs("lorvane-field: no text field has the focus there\n", stderr);
        return 1;
    }
    const QByteArray out = verb == QStringLiteral("text")
                               ? reading->text.toUtf8()
                               : QJsonDocument(reading->toJson()).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(out.constData(), 1, static_cast<size_t>(out.size()), stdout);
    return 0;
}

int run(QCommandLineParser& parser) {
    const QStringList words = parser.positionalArguments();
    const QString verb = words.value(0);
    qint64 pid = parser.value(QStringLiteral("pid")).toLongLong();
    const Asked wanted{pid, parser.value(QStringLiteral("wait")).toDouble(),
                       parser.isSet(QStringLiteral("resting")), parser.isSet(QStringLiteral("document"))};
    const FieldReader reader;
    if ((verb == QStringLiteral("show") || verb == QStringLiteral("text")) && words.size() == 1)
        return show(reader, verb, wanted);
    if (verb == QStringLiteral("select") && words.size() == 3) {
        if (pid == 0)
            pid = lorvane::windows::active().pid;
        return reader.select(pid, words[1].toInt(), words[2].toInt()) ? 0 : 1;
    }
    std::fputs(qPrintable(parser.helpText()), stderr);
    return misuse;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("show: all about the focused field as JSON; text: its text alone;\n"
                       "select FIRST LAST: puts the selection or the caret there"));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("verb"), QStringLiteral("show, text or select"));
    parser.addOption({QStringLiteral("pid"), QStringLiteral("of this process; else of the active window's"),
                      QStringLiteral("pid"), QStringLiteral("0")});
    parser.addOption({QStringLiteral("wait"), QStringLiteral("for a field at most so long"),
                      QStringLiteral("seconds"), QStringLiteral("0")});
    parser.addOption({QStringLiteral("document"), QStringLiteral("all paragraphs of a word processor")});
    parser.addOption({QStringLiteral("resting"), QStringLiteral("a large text without the focus will do")});
    parser.process(application);
    try {
        return run(parser);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lorvane-field: %s\n", error.what());
        return 1;
    }
}
