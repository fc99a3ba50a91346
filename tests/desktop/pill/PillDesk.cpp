// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktop/pill/PillDesk.h"

#include <QtCore/QJsonDocument>

#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include <xcb/shape.h>

namespace lorvane {

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

xcb_atom_t atomOf(xcb_connection_t* xcb, const char* name) {
    const auto cookie = xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    return owned(xcb_intern_atom_reply(xcb, cookie, nullptr))->atom;
}

class Connection {
 public:
    Connection() : xcb(xcb_connect(nullptr, nullptr)) {}
    ~Connection() { xcb_disconnect(xcb); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    xcb_connection_t* const xcb;
};

} // namespace

PillStage::PillStage(const QStringList& environment) {
    QProcessEnvironment surroundings = QProcessEnvironment::systemEnvironment();
    for (const QString& setting : environment) {
        surroundings.insert(setting.section('=', 0, 0), setting.section('=', 1));
    }
    process_.setProcessEnvironment(surroundings);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral(PILL_STAGE), {});
    if (!waitForWord(QStringLiteral("ready")) || !waitUntil([this] { return display::isShown(window()); })) {
        throw std::runtime_error("the pill does not show");
    }
}

PillStage::~PillStage() {
    process_.closeWriteChannel();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished();
    }
}

void PillStage::tell(const QString& line) { process_.write(line.toUtf8() + '\n'); }

QJsonObject PillStage::state() {
    states_.clear();
    tell(QStringLiteral("state"));
    const bool answered = waitUntil([this] {
        listen();
        return !states_.isEmpty();
    });
    return answered ? states_.last() : QJsonObject{};
}

QPoint PillStage::place() {
    const QJsonObject now = state();
    const double scale = now["scale"].toDouble();
    return QPointF(now["x"].toDouble() * scale, now["y"].toDouble() * scale).toPoint();
}

double PillStage::waitForWidth(double width) {
    double seen = 0;
    (void)waitUntil([&] {
        const QJsonObject now = state();
        seen = now["capsuleWidth"].toDouble();
        return seen == width && !now["resizing"].toBool();
    });
    return seen;
}

bool PillStage::waitForWord(const QString& line) {
    return waitUntil([&] { return hasSaid(line); });
}

bool PillStage::hasSaid(const QString& line) {
    listen();
    return said_.removeAll(line) > 0;
}

void PillStage::listen() {
    pending_ += process_.readAllStandardOutput();
    for (qsizetype end = pending_.indexOf('\n'); end >= 0; end = pending_.indexOf('\n')) {
        const QByteArray line = pending_.left(end);
        pending_.remove(0, end + 1);
        if (line.startsWith('{')) {
            states_.append(QJsonDocument::fromJson(line).object());
        } else {
            said_.append(QString::fromUtf8(line));
        }
    }
}

namespace mouse {

void moveTo(QPoint pixels) {
    runTool("xdotool", {"mousemove", QString::number(pixels.x()), QString::number(pixels.y())});
}

void click(int button) { runTool("xdotool", {"click", QString::number(button)}); }

} // namespace mouse

Picture::Picture(const QRect& area) : area_(area) {
    const QString crop =
        QStringLiteral("%1x%2+%3+%4").arg(area.width()).arg(area.height()).arg(area.x()).arg(area.y());
    bytes_ = runTool("import", {"-window", "root", "-crop", crop, "-depth", "8", "rgb:-"}).output;
    if (bytes_.size() != qsizetype{3} * area.width() * area.height()) {
        throw std::runtime_error("no picture of the screen");
    }
}

std::array<int, 3> Picture::at(int x, int y) const {
    const qsizetype first = 3 * (qsizetype{y} * area_.width() + x);
    const auto part = [this, first](int i) { return static_cast<unsigned char>(bytes_[first + i]); };
    return {part(0), part(1), part(2)};
}

int Picture::extent(int row) const {
    const auto ground = at(0, row);
    int first = -1;
    int last = -2;
    for (int x = 0; x < area_.width(); ++x) {
        if (at(x, row) != ground) {
            first = first < 0 ? x : first;
            last = x;
        }
    }
    return last - first + 1;
}

bool Picture::hasNear(const std::array<int, 3>& colour, int tolerance) const {
    for (int y = 0; y < area_.height(); ++y) {
        for (int x = 0; x < area_.width(); ++x) {
            const auto seen = at(x, y);
            if (std::abs(seen[0] - colour[0]) <= tolerance && std::abs(seen[1] - colour[1]) <= tolerance &&
                std::abs(seen[2] - colour[2]) <= tolerance) {
                return true;
            }
        }
    }
    return false;
}

OtherWindow::OtherWindow(const QRect& place, Kind kind) : xcb_(xcb_connect(nullptr, nullptr)) {
    const auto* const screen = xcb_setup_roots_iterator(xcb_get_setup(xcb_)).data;
    root_ = screen->root;
    window_ = xcb_generate_id(xcb_);
    const std::uint32_t values[] = {screen->white_pixel, XCB_EVENT_MASK_BUTTON_PRESS};
    xcb_create_window(xcb_, XCB_COPY_FROM_PARENT, window_, root_, static_cast<std::int16_t>(place.x()),
                      static_cast<std::int16_t>(place.y()), static_cast<std::uint16_t>(place.width()),
                      static_cast<std::uint16_t>(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    if (kind == Kind::fullScreen) {
        setAtoms("_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN");
    } else if (kind == Kind::panel) {
        setAtoms("_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK");
        const auto height = static_cast<quint32>(place.height());
        setNumbers("_NET_WM_STRUT_PARTIAL",
                   {0, 0, 0, height, 0, 0, 0, 0, 0, 0, static_cast<quint32>(place.x()),
                    static_cast<quint32>(place.x() + place.width() - 1)});
    }
    xcb_map_window(xcb_, window_);
    xcb_flush(xcb_);
    if (!waitUntil([this] { return display::isShown(window_); })) {
        throw std::runtime_error("a window does not show");
    }
}

OtherWindow::~OtherWindow() { xcb_disconnect(xcb_); }

int OtherWindow::presses(int button) {
    while (const auto event = owned(xcb_poll_for_event(xcb_))) {
        if ((event->response_type & 0x7F) == XCB_BUTTON_PRESS) {
            pressed_.append(reinterpret_cast<const xcb_button_press_event_t&>(*event).detail);
        }
    }
    return static_cast<int>(pressed_.count(button));
}

QRect OtherWindow::place() const {
    const auto size = owned(xcb_get_geometry_reply(xcb_, xcb_get_geometry(xcb_, window_), nullptr));
    const auto corner = owned(xcb_translate_coordinates_reply(
        xcb_, xcb_translate_coordinates(xcb_, window_, root_, 0, 0), nullptr));
    return {corner->dst_x, corner->dst_y, size->width, size->height};
}

void OtherWindow::setAtoms(const char* name, const char* value) {
    const xcb_atom_t atom = atomOf(xcb_, value);
    xcb_change_property(xcb_, XCB_PROP_MODE_REPLACE, window_, atomOf(xcb_, name), XCB_ATOM_ATOM, 32, 1,
                        &atom);
}

void OtherWindow::setNumbers(const char* name, const QList<quint32>& values) {
    xcb_change_property(xcb_, XCB_PROP_MODE_REPLACE, window_, atomOf(xcb_, name), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(values.size()), values.constData());
}

namespace display {

quint32 focus() {
    const Connection to;
    return owned(xcb_get_input_focus_reply(to.xcb, xcb_get_input_focus(to.xcb), nullptr))->focus;
}

QList<QRect> inputShape(quint32 window) {
    const Connection to;
    const auto answer = owned(xcb_shape_get_rectangles_reply(
        to.xcb, xcb_shape_get_rectangles(to.xcb, window, XCB_SHAPE_SK_INPUT), nullptr));
    QList<QRect> rects;
    const auto* const first = answer ? xcb_shape_get_rectangles_rectangles(answer.get()) : nullptr;
    for (int i = 0; answer && i < xcb_shape_get_rectangles_rectangles_length(answer.get()); ++i) {
        rects.append(QRect(first[i].x, first[i].y, first[i].width, first[i].height));
    }
    return rects;
}

bool isCutOut(quint32 window) {
    const Connection to;
    const auto answer =
        owned(xcb_shape_query_extents_reply(to.xcb, xcb_shape_query_extents(to.xcb, window), nullptr));
    return answer && answer->bounding_shaped != 0;
}

bool isShown(quint32 window) {
    const Connection to;
    const auto answer =
        owned(xcb_get_window_attributes_reply(to.xcb, xcb_get_window_attributes(to.xcb, window), nullptr));
    return answer && answer->map_state == XCB_MAP_STATE_VIEWABLE;
}

QRect openMenu() {
    const Connection to;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(to.xcb)).data->root;
    const auto tree = owned(xcb_query_tree_reply(to.xcb, xcb_query_tree(to.xcb, root), nullptr));
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {
        const auto traits = owned(
            xcb_get_window_attributes_reply(to.xcb, xcb_get_window_attributes(to.xcb, children[i]), nullptr));
        const auto size =
            owned(xcb_get_geometry_reply(to.xcb, xcb_get_geometry(to.xcb, children[i]), nullptr));
        const bool isPill = size && size->width == 440 && size->height == 96;
        if (traits && size && !isPill && traits->map_state == XCB_MAP_STATE_VIEWABLE &&
            traits->override_redirect != 0 && traits->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
            size->width > 60 && size->height > 40) {
            return {size->x, size->y, size->width, size->height};
        }
    }
    return {};
}

QByteArray rootProperty(const QString& name) { return runTool("xprop", {"-root", name}).output; }

} // namespace display

} // namespace lorvane
