// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardPeers.h"

#include "platform/linux/clipboard/ContentTypes.h"

#include <QFile>
#include <QUuid>

#include <csignal>
#include <stdexcept>

namespace lorvane {

ForeignOwner::ForeignOwner(const Types& types, const QStringList& options) {
    QStringList arguments = options;
    int count = 0;
    for (auto it = types.begin(); it != types.end(); ++it) {
        QFile file(folder_.filePath(QString::number(++count)));
        if (!file.open(QIODevice::WriteOnly) || file.write(it.value()) != it.value().size()) {
            throw std::runtime_error("no room for a clipboard's content");
        }
        arguments.append(it.key() + u'=' + file.fileName());
    }
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral(LORVANE_CLIPBOARD_OWNER), arguments);
    QByteArray said;
    const bool isReady = waitUntil([&] {
        said += process_.readAllStandardOutput();
        return said.contains("ready");
    });
    if (!isReady) {
        throw std::runtime_error("the other owner of the clipboard did not come up");
    }
}

ForeignOwner::~ForeignOwner() { kill(); }

void ForeignOwner::hang() {
    hangs_ = true;
    ::kill(static_cast<pid_t>(process_.processId()), SIGSTOP);
}

void ForeignOwner::wake() {
    hangs_ = false;
    ::kill(static_cast<pid_t>(process_.processId()), SIGCONT);
}

void ForeignOwner::kill() {
    if (process_.state() != QProcess::NotRunning) {
        process_.kill();
        process_.waitForFinished();
    }
}

std::optional<QByteArray> askedByAnother(const QString& type, const QString& selection) {
    const auto result = runTool("xclip", {"-o", "-selection", selection, "-t", type});
    return result.status == 0 ? std::optional(result.output) : std::nullopt;
}

QStringList targetsAskedByAnother() {
    const auto listed = askedByAnother("TARGETS");
    return QString::fromUtf8(listed.value_or(QByteArray())).split(u'\n', Qt::SkipEmptyParts);
}

Types everythingAskedByAnother() {
    Types types;
    for (const auto& name : targetsAskedByAnother()) {
        if (contenttypes::isContent(name)) {
            types.insert(name, askedByAnother(name).value_or("(refused)"));
        }
    }
    return types;
}

QString uniqueText(const QString& name) {
    return name + u' ' + QUuid::createUuid().toString(QUuid::WithoutBraces) + QStringLiteral(" дом 😀");
}

PasteboardOnDesktop::PasteboardOnDesktop() : pasteboard_(X11Pasteboard::open(clock_)) {
    if (!pasteboard_) {
        throw std::runtime_error("no X server");
    }
}

PasteboardSnapshot PasteboardOnDesktop::snapshot() {
    return finish<PasteboardSnapshot>(
        [this](TaskScope scope) { return pasteboard_->snapshot(std::move(scope)); });
}

std::optional<QString> PasteboardOnDesktop::string() {
    using Text = std::optional<QString>;
    return finish<Text>([this](TaskScope scope) { return pasteboard_->string(std::move(scope)); });
}

void PasteboardOnDesktop::lend(const QString& text, ProcessId target, const PasteboardSnapshot& previous,
                               bool primaryToo) {
    PasteboardLoan loan;
    loan.text = text;
    loan.target = target;
    loan.previous = previous;
    loan.primaryToo = primaryToo;
    pasteboard_->lend(loan);
}

} // namespace lorvane
