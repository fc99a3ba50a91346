// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FieldReader.h"

#include <stdexcept>

#include <atspi/atspi.h>

namespace lorvane {

namespace {

constexpr int callBound = 2000;   // ms; a busy test machine answers late, a hung program never
constexpr int searchLimit = 5000; // nodes

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class Object>
using Ref = std::unique_ptr<Object, Unref>;
using Node = Ref<AtspiAccessible>;

// Collects the error of a call; a call that failed may look like an empty answer.
class Error {
 public:
    ~Error() { g_clear_error(&error_); }
    Error() = default;
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    GError** out() {
        g_clear_error(&error_);
        return &error_;
    }
    bool happened() const { return error_ != nullptr; }

 private:
    GError* error_ = nullptr;
};

QString taken(gchar* text) {
    QString copy = QString::fromUtf8(text);
    g_free(text);
    return copy;
}

bool hasState(AtspiAccessible* node, AtspiStateType state) {
    const Ref<AtspiStateSet> states(atspi_accessible_get_state_set(node));
    return states && atspi_state_set_contains(states.get(), state);
}

Node child(AtspiAccessible* node, int index) {
    Error error;
    return Node(atspi_accessible_get_child_at_index(node, index, error.out()));
}

int childCount(AtspiAccessible* node) {
    Error error;
    const int count = atspi_accessible_get_child_count(node, error.out());
    return error.happened() ? 0 : count;
}

Node application(qint64 pid) {
    const Node desktop(atspi_get_desktop(0));
    for (int i = 0; i < childCount(desktop.get()); ++i) {
        Node candidate = child(desktop.get(), i);
        Error error;
        if (candidate &&
            atspi_accessible_get_process_id(candidate.get(), error.out()) == static_cast<guint>(pid))
            return candidate;
    }
    return nullptr;
}

using Wanted = bool (*)(AtspiAccessible*);

bool hasText(AtspiAccessible* node) {
    return Ref<AtspiText>(atspi_accessible_get_text_iface(node)) != nullptr;
}

bool isFocused(AtspiAccessible* node) { return hasState(node, ATSPI_STATE_FOCUSED) && hasText(node); }

bool isLargeEditable(AtspiAccessible* node) {
    return hasState(node, ATSPI_STATE_EDITABLE) && hasState(node, ATSPI_STATE_MULTI_LINE) &&
           hasState(node, ATSPI_STATE_SHOWING) && hasText(node);
}

bool isDocument(AtspiAccessible* node) {
    Error error;
    return atspi_accessible_get_role(node, error.out()) == ATSPI_ROLE_DOCUMENT_TEXT;
}

Node find(Node node, Wanted wanted, int& left) {
    if (--left < 0)
        return nullptr;
    if (wanted(node.get()))
        return node;
    const int count = childCount(node.get());
    for (int i = 0; i < count; ++i) {
        if (Node next = child(node.get(), i)) {
            if (Node found = find(std::move(next), wanted, left))
                return found;
        }
    }
    return nullptr;
}

Node find(qint64 pid, Wanted wanted) {
    // What was read before is not believed: the tree of another program changes without our knowledge.
    Node app = application(pid);
    if (!app)
        return nullptr;
    atspi_accessible_clear_cache(app.get());
    int left = searchLimit;
    return find(std::move(app), wanted, left);
}

std::optional<QString> textOf(AtspiAccessible* node) {
    if (!node)
        return std::nullopt;
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(node));
    Error error;
    const QString whole = taken(atspi_text_get_text(text.get(), 0, -1, error.out()));
    return error.happened() ? std::nullopt : std::optional(whole);
}

std::optional<ShownField> read(AtspiAccessible* node, qint64 pid) {
    const auto whole = textOf(node);
    if (!whole)
        return std::nullopt;
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(node));
    Error error;
    ShownField reading;
    reading.pid = pid;
    reading.text = *whole;
    reading.caret = atspi_text_get_caret_offset(text.get(), error.out());
    reading.role = taken(atspi_accessible_get_role_name(node, error.out()));
    reading.password = atspi_accessible_get_role(node, error.out()) == ATSPI_ROLE_PASSWORD_TEXT;
    reading.editable = hasState(node, ATSPI_STATE_EDITABLE);
    const Node app(atspi_accessible_get_application(node, error.out()));
    if (app)
        reading.application = taken(atspi_accessible_get_name(app.get(), error.out()));
    return reading;
}

} // namespace

struct FieldReader::Bus {
    Node found;
};

FieldReader::FieldReader() : bus_(std::make_unique<Bus>()) {
    if (atspi_init() > 1)
        throw std::runtime_error("no accessibility bus answers");
    atspi_set_timeout(callBound, callBound);
}

FieldReader::~FieldReader() {
    bus_->found.reset();
    atspi_exit();
}

std::optional<ShownField> FieldReader::focused(qint64 pid) const {
    bus_->found = find(pid, isFocused);
    return read(bus_->found.get(), pid);
}

std::optional<QString> FieldReader::textAgain() const { return textOf(bus_->found.get()); }

std::optional<ShownField> FieldReader::resting(qint64 pid) const {
    return read(find(pid, isLargeEditable).get(), pid);
}

std::optional<ShownField> FieldReader::document(qint64 pid) const {
    const Node root = find(pid, isDocument);
    const int count = root ? childCount(root.get()) : 0;
    std::optional<ShownField> whole;
    for (int i = 0; i < count; ++i) {
        const Node paragraph = child(root.get(), i);
        const auto part = paragraph && hasText(paragraph.get()) ? read(paragraph.get(), pid) : std::nullopt;
        if (!part)
            return std::nullopt;
        if (!whole) {
            whole = part;
            whole->caret = -1;
            continue;
        }
        whole->text += QChar(u'\n') + part->text;
    }
    return whole;
}

bool FieldReader::select(qint64 pid, int first, int last) const {
    const Node node = find(pid, isFocused);
    if (!node)
        return false;
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(node.get()));
    Error error;
    if (first == last)
        return atspi_text_set_caret_offset(text.get(), first, error.out()) && !error.happened();
    if (atspi_text_get_n_selections(text.get(), error.out()) > 0)
        return atspi_text_set_selection(text.get(), 0, first, last, error.out()) && !error.happened();
    return atspi_text_add_selection(text.get(), first, last, error.out()) && !error.happened();
}

QJsonObject ShownField::toJson() const {
    return {
        {QStringLiteral("pid"), pid},           {QStringLiteral("application"), application},
        {QStringLiteral("toolkit"), toolkit},   {QStringLiteral("role"), role},
        {QStringLiteral("text"), text},         {QStringLiteral("caret"), caret},
        {QStringLiteral("editable"), editable}, {QStringLiteral("password"), password},
    };
}

} // namespace lorvane
