// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11StackedWindows.h"

#include "platform/linux/x11/X11Properties.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace lorvane {

namespace {

using Numbers = std::vector<std::uint32_t>;

constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;

/// The requests for one window, sent before the first answer is awaited.
struct Shape {
    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t place;
};

struct Traits {
    xcb_get_property_cookie_t desktop;
    xcb_get_property_cookie_t state;
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t decoration;
    xcb_get_property_cookie_t shadow;
};

class Reading {
 public:
    explicit Reading(X11Connection& connection) : connection_(connection) {
        const Numbers number = windowNumbers(connection, connection.root(), "_NET_CURRENT_DESKTOP");
        desktop_ = number.empty() ? everyDesktop : number.front();
    }

    [[nodiscard]] std::vector<DesktopWindow> read(const Numbers& windows) {
        std::vector<DesktopWindow> shown = visibleOnes(windows);
        std::vector<Traits> asked;
        std::transform(shown.begin(), shown.end(), std::back_inserter(asked),
                       [this](const DesktopWindow& window) { return askTraits(window.id); });
        std::vector<DesktopWindow> result;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            if (takeTraits(shown[i], asked[i])) {
                result.push_back(shown[i]);
            }
        }
        return result;
    }

 private:
    [[nodiscard]] std::vector<DesktopWindow> visibleOnes(const Numbers& windows) {
        xcb_connection_t* const xcb = connection_.xcb();
        std::vector<Shape> asked;
        for (const xcb_window_t window : windows) {
            asked.push_back({window, xcb_get_window_attributes(xcb, window), xcb_get_geometry(xcb, window),
                             xcb_translate_coordinates(xcb, window, connection_.root(), 0, 0)});
        }
        std::vector<DesktopWindow> shown;
        for (const Shape& shape : asked) {
            const auto attributes = connection_.reply(xcb_get_window_attributes_reply, shape.attributes);
            const auto size = connection_.reply(xcb_get_geometry_reply, shape.geometry);
            const auto place = connection_.reply(xcb_translate_coordinates_reply, shape.place);
            if (attributes && size && place && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
                shown.push_back(
                    {shape.window, {place->dst_x, place->dst_y, size->width, size->height}, true});
            }
        }
        return shown;
    }

    [[nodiscard]] Traits askTraits(xcb_window_t window) {
        const auto ask = [this, window](const char* name) {
            constexpr std::uint32_t enough = 32;
            return xcb_get_property(connection_.xcb(), 0, window, connection_.atom(name),
                                    XCB_GET_PROPERTY_TYPE_ANY, 0, enough);
        };
        return {ask("_NET_WM_DESKTOP"), ask("_NET_WM_STATE"), ask("_NET_WM_WINDOW_TYPE"),
                ask("_NET_FRAME_EXTENTS"), ask("_GTK_FRAME_EXTENTS")};
    }

    /// False when it is not on screen.
    [[nodiscard]] bool takeTraits(DesktopWindow& window, const Traits& asked) {
        const Numbers desktop = numbers(asked.desktop);
        const Numbers state = numbers(asked.state);
        const Numbers type = numbers(asked.type);
        window.bounds = grown(window.bounds, numbers(asked.decoration), 1);
        window.bounds = grown(window.bounds, numbers(asked.shadow), -1);
        window.isOrdinary = !has(state, {"_NET_WM_STATE_ABOVE"}) &&
                            !has(type, {"_NET_WM_WINDOW_TYPE_DESKTOP", "_NET_WM_WINDOW_TYPE_DOCK"});
        const bool isElsewhere = !desktop.empty() && desktop.front() != everyDesktop &&
                                 desktop_ != everyDesktop && desktop.front() != desktop_;
        return !isElsewhere && !has(state, {"_NET_WM_STATE_HIDDEN"});
    }

    [[nodiscard]] Numbers numbers(xcb_get_property_cookie_t cookie) {
        const auto answer = connection_.reply(xcb_get_property_reply, cookie);
        if (!answer || answer->format != 32) {
            return {};
        }
        const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
        return {first, first + answer->value_len};
    }

    /// By left, right, top and bottom.
    [[nodiscard]] static QRect grown(const QRect& rect, const Numbers& by, int sign) {
        if (by.size() < 4) {
            return rect;
        }
        const auto side = [&by, sign](std::size_t i) { return sign * static_cast<int>(by[i]); };
        return rect.adjusted(-side(0), -side(2), side(1), side(3));
    }

    [[nodiscard]] bool has(const Numbers& atoms, std::initializer_list<const char*> names) {
        return std::any_of(names.begin(), names.end(), [this, &atoms](const char* name) {
            return std::find(atoms.begin(), atoms.end(), connection_.atom(name)) != atoms.end();
        });
    }

    X11Connection& connection_;
    std::uint32_t desktop_;
};

} // namespace

std::optional<std::vector<DesktopWindow>> readStackedWindows(X11Connection& connection) {
    const Numbers windows = windowNumbers(connection, connection.root(), "_NET_CLIENT_LIST_STACKING");
    if (windows.empty()) {
        return std::nullopt;
    }
    return Reading(connection).read(windows);
}

} // namespace lorvane
