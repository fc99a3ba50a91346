// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/SelectionOwner.h"

#include "platform/linux/clipboard/ContentTypes.h"

#include <cstring>
#include <vector>

namespace lorvane {

namespace {

constexpr qsizetype mostMultipleBytes = 4096; // 512 pairs
const QString targetsName = QStringLiteral("TARGETS");
const QString multipleName = QStringLiteral("MULTIPLE");
const QString timestampName = QStringLiteral("TIMESTAMP");
const QString saveTargetsName = QStringLiteral("SAVE_TARGETS");

/// Requests are numbered in 32 bits that wrap round.
bool isBefore(std::uint32_t one, std::uint32_t other) { return static_cast<std::int32_t>(one - other) < 0; }

} // namespace

SelectionOwner::SelectionOwner(XcbConnection& connection, IncrementalSender& sender, Clock& clock,
                               const QString& selection)
    : connection_(connection), sender_(sender), clock_(clock), selection_(connection.atom(selection)),
      window_(connection.makeWindow()),
      changes_(connection.selectionChanged.subscribe([this](const auto& change) { onChange(change); })),
      events_(connection.handle(window_, [this](const auto& event) { onEvent(event); })) {
    connection_.watchSelection(window_, selection_);
    connection_.flush();
}

SelectionOwner::~SelectionOwner() {
    events_.reset();
    connection_.destroyWindow(window_);
}

void SelectionOwner::take(ClipboardOffer offer) {
    setOwned(std::move(offer));
    since_ = XCB_CURRENT_TIME;
    takenByRequest_ =
        xcb_set_selection_owner(connection_.raw(), window_, selection_, XCB_CURRENT_TIME).sequence;
    waitForServer();
}

void SelectionOwner::replace(ClipboardOffer offer) {
    if (!mayReplace()) {
        return;
    }
    setOwned(std::move(offer));
    xcb_set_selection_owner(connection_.raw(), window_, selection_, justAfterLastChange());
    waitForServer();
}

void SelectionOwner::release() {
    if (!mayReplace()) {
        return;
    }
    setOwned(ClipboardOffer());
    isOwned_ = false;
    xcb_set_selection_owner(connection_.raw(), XCB_WINDOW_NONE, selection_, justAfterLastChange());
    if (connection_.ownerOf(selection_) == window_) {
        // Taken within this very millisecond: for the server that time is still to come.
        xcb_set_selection_owner(connection_.raw(), XCB_WINDOW_NONE, selection_, XCB_CURRENT_TIME);
    }
    connection_.flush();
}

void SelectionOwner::setOwned(ClipboardOffer offer) {
    offer_ = std::move(offer);
    lastRequest_.reset();
    isOwned_ = true;
    isLost_ = false;
}

void SelectionOwner::lose() {
    isLost_ = isLost_ || isOwned_;
    isOwned_ = false;
    offer_ = ClipboardOffer();
}

/// When a call returns, whoever asks finds the new state: the server serves its clients in no fixed order.
void SelectionOwner::waitForServer() { static_cast<void>(connection_.ownerOf(selection_)); }

bool SelectionOwner::mayReplace() {
    if (isOwned_ && since_ == XCB_CURRENT_TIME && connection_.ownerOf(selection_) != window_) {
        lose();
    }
    return isOwned_ || (since_ != XCB_CURRENT_TIME && readAt_ == changeCount_);
}

/// A time at which nobody can have taken the selection but by the change that is known: the server drops a
/// request with a time before the last change, so that a copy that we have not heard of yet stays.
xcb_timestamp_t SelectionOwner::justAfterLastChange() const {
    return since_ == XCB_CURRENT_TIME || since_ + 1 == XCB_CURRENT_TIME ? since_ : since_ + 1;
}

void SelectionOwner::onChange(const SelectionChange& change) {
    if (change.selection != selection_ || isBefore(change.afterRequest, takenByRequest_)) {
        return;
    }
    since_ = change.time;
    ++changeCount_;
    if (change.owner != window_) {
        lose();
    }
}

void SelectionOwner::onEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7f) == XCB_SELECTION_REQUEST) {
        answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
    }
}

void SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    if (connection_.isOurs(request.requestor) || request.selection != selection_) {
        return;
    }
    // A client of old conventions names no property and means one named as the target.
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    const auto process = connection_.processOf(request.requestor);
    const bool isMultiple = request.target == connection_.atom(multipleName);
    bool done = false;
    if (isOwned_ && isMultiple) {
        done = request.property != XCB_ATOM_NONE && convertMultiple(request.requestor, property, process);
    } else if (isOwned_) {
        done = convert(request.requestor, request.target, property, process);
    }
    xcb_selection_notify_event_t reply{};
    reply.response_type = XCB_SELECTION_NOTIFY;
    reply.requestor = request.requestor;
    reply.selection = request.selection;
    reply.target = request.target;
    reply.property = done ? property : xcb_atom_t{XCB_ATOM_NONE};
    reply.time = request.time;
    char wire[32] = {};
    static_assert(sizeof reply <= sizeof wire);
    std::memcpy(wire, &reply, sizeof reply);
    xcb_send_event(connection_.raw(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire);
    connection_.flush();
}

bool SelectionOwner::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                             std::optional<ProcessId> process) {
    const auto& content = offer_.forRequestor(process);
    if (content.isEmpty()) {
        return false; // as a selection without an owner answers
    }
    const QString name = connection_.atomNames({target}).value(0);
    if (name == targetsName) {
        writeTargets(requestor, property, content);
        return true;
    }
    if (name == timestampName) {
        xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER,
                            32, 1, &since_);
        return true;
    }
    if (name == saveTargetsName) {
        return write(requestor, property, {name, QByteArray(), QStringLiteral("NULL"), 32});
    }
    const auto* found = content.find(name);
    if (found == nullptr) {
        return false;
    }
    if (offer_.isBorrower(process) && contenttypes::isText(name)) {
        lastRequest_ = clock_.now();
    }
    return write(requestor, property, *found);
}

bool SelectionOwner::convertMultiple(xcb_window_t requestor, xcb_atom_t property,
                                     std::optional<ProcessId> process) {
    const auto asked = connection_.property(requestor, property, mostMultipleBytes, false);
    if (!asked.exists || asked.format != 32 || asked.cut) {
        return false;
    }
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(asked.bytes.size()) / sizeof(xcb_atom_t));
    std::memcpy(atoms.data(), asked.bytes.constData(), atoms.size() * sizeof(xcb_atom_t));
    const xcb_atom_t multiple = connection_.atom(multipleName);
    for (std::size_t i = 0; i + 1 < atoms.size(); i += 2) {
        const bool isPossible = atoms[i] != multiple && atoms[i + 1] != XCB_ATOM_NONE;
        if (!isPossible || !convert(requestor, atoms[i], atoms[i + 1], process)) {
            atoms[i + 1] = XCB_ATOM_NONE;
        }
    }
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, requestor, property, asked.type, 32,
                        static_cast<std::uint32_t>(atoms.size()), atoms.data());
    return true;
}

void SelectionOwner::writeTargets(xcb_window_t requestor, xcb_atom_t property,
                                  const ClipboardContent& content) {
    std::vector<xcb_atom_t> atoms;
    for (const auto& name : {targetsName, timestampName, multipleName, saveTargetsName}) {
        atoms.push_back(connection_.atom(name));
    }
    for (const auto& entry : content.types) {
        atoms.push_back(connection_.atom(entry.type));
    }
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(atoms.size()), atoms.data());
}

bool SelectionOwner::write(xcb_window_t requestor, xcb_atom_t property, const TypedBytes& content) {
    if (sender_.isTooBigForOnePiece(content.bytes)) {
        return sender_.begin(requestor, property, content);
    }
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, requestor, property,
                        connection_.atom(content.propertyType), static_cast<std::uint8_t>(content.format),
                        static_cast<std::uint32_t>(content.bytes.size() / (content.format / 8)),
                        content.bytes.constData());
    return true;
}

} // namespace lorvane
