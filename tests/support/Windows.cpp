// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Windows.h"

#include "support/SessionHands.h"

#include <memory>
#include <stdexcept>

#include <QtCore/QJsonObject>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace lorvane::windows {

namespace {

// A window may be gone by the time it is asked, which is no error here.
int ignoreError(Display*, XErrorEvent*) { return 0; }

class Session {
 public:
    Session() : display_(XOpenDisplay(nullptr)) {
        if (!display_)
            throw std::runtime_error("no X display answers");
        before_ = XSetErrorHandler(ignoreError);
    }
    ~Session() {
        XSync(display_, False);
        XSetErrorHandler(before_);
        XCloseDisplay(display_);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Window root() const { return DefaultRootWindow(display_); }

    QList<quint32> numbers(Window window, const char* property) const {
        const Property value(*this, window, property, AnyPropertyType);
        QList<quint32> found;
        if (value.format == 32) {
            for (unsigned long i = 0; i < value.count; ++i)
                found.append(static_cast<quint32>(reinterpret_cast<unsigned long*>(value.data)[i]));
        }
        return found;
    }

    QString text(Window window, const char* property) const {
        const Property value(*this, window, property, AnyPropertyType);
        if (value.format != 8)
            return {};
        return QString::fromUtf8(reinterpret_cast<const char*>(value.data),
                                 static_cast<qsizetype>(value.count));
    }

    void ask(Window window, const char* message, long first, long second) const {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(display_, message, False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = first;
        event.xclient.data.l[1] = second;
        XSendEvent(display_, root(), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    }

    WindowInfo describe(quint32 id) const {
        const auto pid = numbers(id, "_NET_WM_PID");
        // WM_CLASS holds two texts, instance and class, each ended by a zero.
        const auto names = text(id, "WM_CLASS").split(QChar(u'\0'));
        auto title = text(id, "_NET_WM_NAME");
        if (title.isEmpty())
            title = text(id, "WM_NAME");
        return {id, pid.isEmpty() ? 0 : pid.first(), names.value(1), title};
    }

 private:
    struct Property {
        Property(const Session& session, Window window, const char* name, Atom type) {
            Atom actual = None;
            unsigned long left = 0;
            constexpr long wholeText = 1L << 20;
            XGetWindowProperty(session.display_, window, XInternAtom(session.display_, name, False), 0,
                               wholeText, False, type, &actual, &format, &count, &left, &data);
        }
        ~Property() {
            if (data)
                XFree(data);
        }
        Property(const Property&) = delete;
        Property& operator=(const Property&) = delete;

        unsigned char* data = nullptr;
        unsigned long count = 0;
        int format = 0;
    };

    Display* display_;
    XErrorHandler before_ = nullptr;
};

constexpr long fromPager = 2;

QList<WindowInfo> ofSession(const QJsonArray& listed) {
    QList<WindowInfo> found;
    for (const QJsonValue& one : listed) {
        const auto text = [&one](const char* key) { return one[QLatin1String(key)].toString(); };
        found.append({static_cast<quint32>(one[QLatin1String("id")].toInteger()),
                      one[QLatin1String("pid")].toInteger(), text("class"), text("title")});
    }
    return found;
}

QJsonArray listOfSession() { return hands::ask({QStringLiteral("windows")}).toArray(); }

void tellSession(const QString& verb, quint32 id) { hands::ask({verb, static_cast<qint64>(id)}); }

} // namespace

QList<WindowInfo> all() {
    if (hands::areThere())
        return ofSession(listOfSession());
    const Session session;
    QList<WindowInfo> found;
    for (const quint32 id : session.numbers(session.root(), "_NET_CLIENT_LIST"))
        found.append(session.describe(id));
    return found;
}

WindowInfo active() {
    if (hands::areThere()) {
        for (const QJsonValue& one : listOfSession()) {
            if (one[QLatin1String("active")].toBool())
                return ofSession({one}).first();
        }
        return {};
    }
    const Session session;
    const auto ids = session.numbers(session.root(), "_NET_ACTIVE_WINDOW");
    return ids.isEmpty() || ids.first() == 0 ? WindowInfo{} : session.describe(ids.first());
}

void activate(quint32 id) {
    if (hands::areThere())
        return tellSession(QStringLiteral("activate"), id);
    const Session session;
    session.ask(id, "_NET_ACTIVE_WINDOW", fromPager, CurrentTime);
}

void close(quint32 id) {
    if (hands::areThere())
        return tellSession(QStringLiteral("close"), id);
    const Session session;
    session.ask(id, "_NET_CLOSE_WINDOW", CurrentTime, fromPager);
}

} // namespace lorvane::windows
