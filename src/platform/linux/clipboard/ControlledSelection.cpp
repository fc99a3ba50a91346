// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ControlledSelection.h"

#include "platform/linux/clipboard/ContentTypes.h"

namespace lorvane {

namespace {

constexpr Duration silence = std::chrono::milliseconds(500);
constexpr Duration compositorPatience = std::chrono::milliseconds(500);
constexpr int mostAttempts = 3;

/// Best first. A plain text without a charset is UTF-8 among Wayland programs.
const QStringList& textTypes() {
    static const QStringList types{
        contenttypes::plainUtf8, contenttypes::utf8, QStringLiteral("text/plain;charset=UTF-8"),
        contenttypes::plain,     contenttypes::text, contenttypes::latin1};
    return types;
}

QString decoded(const QString& type, const QByteArray& bytes) {
    return type == contenttypes::latin1 && !QUtf8StringView(bytes).isValidUtf8() ? QString::fromLatin1(bytes)
                                                                                 : QString::fromUtf8(bytes);
}

std::optional<QString> textOf(const ClipboardContent& content) {
    for (const QString& type : textTypes()) {
        if (const TypedBytes* const entry = content.find(type)) {
            return decoded(type, entry->bytes);
        }
    }
    return std::nullopt;
}

QStringList typesOf(const ClipboardContent& content) {
    QStringList types;
    for (const TypedBytes& entry : content.types) {
        types.append(entry.type);
    }
    return types;
}

} // namespace

ControlledSelection::ControlledSelection(WaylandConnection& connection, DataControlDevice& device,
                                         PipeWriters& writers, Clock& clock, WaylandSelection selection)
    : connection_(connection), device_(device), writers_(writers), clock_(clock), selection_(selection),
      watch_(
          device.onChange([this](WaylandSelection changed) { changes_ += changed == selection_ ? 1 : 0; })) {}

QCoro::Task<bool> ControlledSelection::caughtUp(TaskScope scope) {
    const Completion<bool> answered;
    const Handle answer = connection_.afterServer([answered] { answered.complete(true); });
    const Handle bound = clock_.after(compositorPatience, [answered] { answered.complete(false); });
    connection_.flush();
    const bool came = co_await answered.wait(scope);
    co_return came&& device_.isAlive();
}

QCoro::Task<ControlledSelection::Read> ControlledSelection::readAll(qsizetype mostBytes, Duration patience,
                                                                    TaskScope scope) {
    Read read;
    const Instant end = clock_.now() + patience;
    for (int count = 0; count < mostAttempts; ++count) {
        const bool knows = co_await caughtUp(scope);
        if (!knows) {
            break;
        }
        if (isOwned_) {
            co_return Read{offer_.own(), true};
        }
        const auto offer = device_.current(selection_);
        if (!offer) {
            co_return Read();
        }
        const auto before = changes_;
        QStringList types = offer->types();
        types.removeIf([](const QString& type) { return !contenttypes::isContent(type); });
        read = co_await attempt(offer, types, mostBytes, end, scope);
        const bool isCaughtUp = co_await caughtUp(scope);
        if (!isCaughtUp || before == changes_) {
            co_return read;
        }
    }
    co_return Read{{}, false};
}

QCoro::Task<ControlledSelection::Read> ControlledSelection::attempt(std::shared_ptr<ForeignOffer> offer,
                                                                    QStringList types, qsizetype mostBytes,
                                                                    Instant end, TaskScope scope) {
    Read read;
    for (const QString& type : types) {
        Pipe pipe = makePipe();
        if (!pipe.readEnd.isOpen()) {
            co_return Read{{}, false};
        }
        offer->receive(type, pipe.writeEnd);
        connection_.flush();
        pipe.writeEnd.close();
        const auto readEnd = std::make_shared<FileDescriptor>(std::move(pipe.readEnd));
        const auto bytes = co_await readPipe(readEnd, clock_, ReadLimits{silence, end, mostBytes}, scope);
        if (!bytes) {
            co_return Read{{}, false};
        }
        mostBytes -= bytes->size();
        read.content.types.append({type, *bytes, type, 8});
    }
    co_return read;
}

QCoro::Task<std::optional<QString>> ControlledSelection::readText(qsizetype mostBytes, TaskScope scope) {
    const bool knows = co_await caughtUp(scope);
    if (!knows) {
        co_return std::nullopt;
    }
    if (isOwned_) {
        co_return textOf(offer_.own());
    }
    const auto change = changes_;
    const auto offer = device_.current(selection_);
    std::optional<QString> text;
    for (const QString& type : textTypes()) {
        if (offer && offer->types().contains(type)) {
            const QStringList wanted{type};
            const Instant end = clock_.now() + silence;
            const Read read = co_await attempt(offer, wanted, mostBytes, end, scope);
            text = read.readable ? textOf(read.content) : std::nullopt;
            break;
        }
    }
    readAt_ = change;
    co_return text;
}

void ControlledSelection::take(ClipboardOffer offer) {
    changing_.reset();
    offer_ = std::move(offer);
    isOwned_ = true;
    isLost_ = false;
    lastRequest_.reset();
    DataControlDevice::Source source;
    source.types = typesOf(offer_.own());
    source.send = [this](const QString& type, FileDescriptor end) { send(type, std::move(end)); };
    source.cancelled = [this] {
        isOwned_ = false;
        isLost_ = true;
        lastRequest_.reset();
    };
    device_.offer(selection_, std::move(source));
    connection_.flush();
}

void ControlledSelection::replace(ClipboardOffer offer) {
    changing_ = connection_.afterServer([this, offer = std::move(offer)] {
        if (mayReplace()) {
            take(offer);
        }
    });
    connection_.flush();
}

void ControlledSelection::release() {
    changing_ = connection_.afterServer([this] {
        if (mayReplace()) {
            isOwned_ = false;
            isLost_ = false;
            lastRequest_.reset();
            device_.clear(selection_);
            connection_.flush();
        }
    });
    connection_.flush();
}

void ControlledSelection::send(const QString& type, FileDescriptor end) {
    if (contenttypes::isText(type) && offer_.isBorrower(std::nullopt)) {
        lastRequest_ = clock_.now();
    }
    if (const TypedBytes* const entry = offer_.forRequestor(std::nullopt).find(type)) {
        writers_.write(std::move(end), entry->bytes);
    }
}

} // namespace lorvane
