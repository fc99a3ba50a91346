// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/QuickWindows.h"

#include "ui/windows/Taskbar.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>

// In a library that is linked into a program, nobody else reaches for them.
static void initializeWindowResources() { Q_INIT_RESOURCE(windows); }

namespace lorvane {

namespace {

void registerTypes() {
    static const bool once = [] {
        initializeWindowResources();
        const QString reason = QStringLiteral("made by the program");
        qmlRegisterUncreatableType<HomeModel>("Lorvane", 1, 0, "HomeModel", reason);
        qmlRegisterUncreatableType<Appearance>("Lorvane", 1, 0, "Appearance", reason);
        qmlRegisterSingletonType(QUrl(QStringLiteral("qrc:/lorvane/ui/Theme.qml")), "Lorvane", 1, 0, "Theme");
        return true;
    }();
    Q_UNUSED(once)
}

// Lists of text need no graphics card, whose driver alone would take more memory than the rest of the
// program.
void chooseRendering() {
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !qEnvironmentVariableIsSet("QSG_RHI_BACKEND")) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
}

void centre(QWindow& window) {
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    const QRect place = screen->availableGeometry();
    const QPoint corner = place.center() - QPoint(window.width(), window.height()) / 2;
    // Where there is hardly room for it, the title bar stays on screen.
    window.setFramePosition({std::max(corner.x(), place.left()), std::max(corner.y(), place.top())});
}

class QuickWindow final : public ShellWindow {
 public:
    // The members go in the opposite order: the window before what it shows, and that before the engine.
    QuickWindow(std::shared_ptr<QQmlEngine> engine, std::unique_ptr<HomeModel> model,
                std::unique_ptr<QQuickWindow> window, std::function<void()> closed)
        : engine_(std::move(engine)), model_(std::move(model)), window_(std::move(window)) {
        centre(*window_);
        // Queued: what is closed is not destroyed while it says so.
        QObject::connect(
            window_.get(), &QQuickWindow::visibleChanged, window_.get(),
            [closed = std::move(closed)](bool visible) {
                if (!visible) {
                    closed();
                }
            },
            Qt::QueuedConnection);
        QObject::connect(window_.get(), &QWindow::activeChanged, window_.get(), [this] { showPolicy(); });
    }

    void bringForward() override {
        window_->show();
        window_->raise();
        window_->requestActivate();
        showPolicy();
    }
    void applyPolicy(ActivationPolicy policy) override {
        policy_ = policy;
        showPolicy();
    }

 private:
    void showPolicy() {
        if (window_->isVisible()) {
            setInTaskbar(*window_, policy_ == ActivationPolicy::regular);
        }
    }

    std::shared_ptr<QQmlEngine> engine_;
    std::unique_ptr<HomeModel> model_;
    std::unique_ptr<QQuickWindow> window_;
    ActivationPolicy policy_ = ActivationPolicy::regular;
};

} // namespace

QuickWindows::QuickWindows(Appearance& appearance, std::function<std::unique_ptr<HomeModel>()> makeHome)
    : appearance_(appearance), makeHome_(std::move(makeHome)) {}

std::shared_ptr<QQmlEngine> QuickWindows::engine() {
    auto engine = engine_.lock();
    if (engine == nullptr) {
        registerTypes();
        chooseRendering();
        engine = std::make_shared<QQmlEngine>();
        engine_ = engine;
    }
    return engine;
}

std::unique_ptr<ShellWindow> QuickWindows::make(WindowKind kind, const QString& /*context*/,
                                                std::function<void()> closed) {
    if (kind != WindowKind::home) {
        return nullptr;
    }
    auto running = engine();
    auto model = makeHome_();
    QQmlComponent component(running.get(), QUrl(QStringLiteral("qrc:/lorvane/ui/HomeWindow.qml")));
    if (component.isError()) {
        qWarning("%s", qUtf8Printable(component.errorString()));
        return nullptr;
    }
    std::unique_ptr<QObject> made(component.createWithInitialProperties(
        {{QStringLiteral("model"), QVariant::fromValue(model.get())},
         {QStringLiteral("appearance"), QVariant::fromValue(&appearance_)}}));
    auto* const window = qobject_cast<QQuickWindow*>(made.get());
    if (window == nullptr) {
        qWarning("%s", qUtf8Printable(component.errorString()));
        return nullptr;
    }
    (void)made.release();
    QQmlEngine::setObjectOwnership(window, QQmlEngine::CppOwnership);
    return std::make_unique<QuickWindow>(std::move(running), std::move(model),
                                         std::unique_ptr<QQuickWindow>(window), std::move(closed));
}

} // namespace lorvane
