// SPDX-License-Identifier: GPL-3.0-or-later
// The pill alone on a real display, for tests, pictures and measures. Standard input moves it, a line each:
//   phase idle|recording|processing|done     notice warning|error TEXT     translating on|off
//   level 0..1     calm on|off     contrast on|off     hide     show     speak CODE     translate CODE
//   wallpaper light|dark
//   menu on (adds a program menu with a submenu to the pill's own)     state (answers with what it shows)
// Standard output tells what its controls did. With --bare nothing is shown and read: what the toolkit alone
// costs.
#include "base/PreferenceCatalogue.h"
#include "base/testing/MemoryPreferenceStore.h"
#include "core/testing/FakePresence.h"
#include "input/testing/FakeAccessibility.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/x11/X11PillDesktop.h"
#include "ui/languages/LanguageCatalogue.h"
#include "ui/pill/PillPanel.h"
#include "ui/pill/testing/FakeDesktopComfort.h"

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QScreen>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

namespace lorvane {

namespace {

void say(const QString& line) {
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

Localisation shippedWords() {
    QFile table(QStringLiteral(WORDS));
    return table.open(QIODevice::ReadOnly) ? Localisation::fromJson(table.readAll()).value_or(Localisation())
                                           : Localisation();
}

PillLanguages catalogue() {
    return {[] {
                std::vector<LanguageChoice> all;
                for (const Language& language : translationLanguages()) {
                    all.push_back({language.code, language.ownName});
                }
                return all;
            },
            ownNameOf};
}

/// A desktop's own window with a picture, since compositors do not draw the root window's.
class Wallpaper final : public QWidget {
 public:
    explicit Wallpaper(bool isDark) : isDark_(isDark) {
        setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                       Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setGeometry(QGuiApplication::primaryScreen()->virtualGeometry());
    }

 protected:
    void paintEvent(QPaintEvent*) override {
        QLinearGradient fill(rect().topLeft(), rect().bottomRight());
        fill.setColorAt(0, isDark_ ? QColor(20, 24, 38) : QColor(250, 247, 240));
        fill.setColorAt(0.5, isDark_ ? QColor(34, 28, 52) : QColor(214, 226, 236));
        fill.setColorAt(1, isDark_ ? QColor(10, 12, 18) : QColor(238, 226, 208));
        QPainter(this).fillRect(rect(), fill);
    }

 private:
    bool isDark_;
};

class Stage {
 public:
    Stage() : input_(STDIN_FILENO, QSocketNotifier::Read) {
        panel_.host(std::make_unique<PillView>(foundation_,
                                               PillView::World{status_, comfort_, catalogue(), commands()}));
        QObject::connect(&input_, &QSocketNotifier::activated, &input_, [this] { read(); });
        watches_.push_back(preferences_.subscribe(
            preference::speakLang, [this] { say("speakLang=" + preferences_.get(preference::speakLang)); }));
        watches_.push_back(preferences_.subscribe(preference::translateLang, [this] {
            say("translateLang=" + preferences_.get(preference::translateLang));
        }));
        status_.refreshPill();
        say("ready");
    }

 private:
    PillCommands commands() {
        return {[this] { return level_; },
                [] { return Hotkey::rightControl; },
                [] { say("startDictation"); },
                [] { say("stopDictation"); },
                [] { say("cancelProcessing"); },
                [this] {
                    say("hideForAnHour");
                    screen_.hideBar(seconds(3600));
                },
                [] { say("quit"); },
                [this](QMenu& menu) { return addProgramMenu(menu); }};
    }

    bool addProgramMenu(QMenu& menu) {
        if (!hasProgramMenu_) {
            return false;
        }
        QMenu* const more = menu.addMenu("Microphone");
        QObject::connect(more->addAction("Built-in"), &QAction::triggered, more, [] { say("built-in"); });
        QObject::connect(menu.addAction("Quit all"), &QAction::triggered, more, [] { say("quit all"); });
        return true;
    }

    void read() {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) {
            return QCoreApplication::quit();
        }
        pending_.append(bytes, count);
        for (qsizetype end = pending_.indexOf('\n'); end >= 0; end = pending_.indexOf('\n')) {
            const QString line = QString::fromUtf8(pending_.left(end));
            pending_.remove(0, end + 1);
            obey(line.section(' ', 0, 0), line.section(' ', 1));
        }
    }

    void obey(const QString& word, const QString& rest) {
        if (word == "phase") {
            setPhase(rest);
        } else if (word == "notice") {
            status_.phase.set(Notice{rest.section(' ', 1), rest.startsWith("error")
                                                               ? NoticeSeverity::error
                                                               : NoticeSeverity::warning});
            status_.refreshPill();
        } else if (word == "translating") {
            status_.isTranslating.set(rest == "on");
        } else if (word == "level") {
            level_ = rest.toDouble();
        } else if (word == "calm") {
            comfort_.set(rest == "on", comfort_.wantsMoreContrast());
        } else if (word == "contrast") {
            comfort_.set(comfort_.wantsLessMotion(), rest == "on");
        } else if (word == "speak") {
            preferences_.set(preference::speakLang, rest);
        } else if (word == "translate") {
            preferences_.set(preference::translateLang, rest);
        } else {
            obeyWindow(word, rest);
        }
    }

    void obeyWindow(const QString& word, const QString& rest) {
        if (word == "hide") {
            panel_.orderOut();
        } else if (word == "show") {
            panel_.show();
        } else if (word == "wallpaper") {
            wallpaper_ = std::make_unique<Wallpaper>(rest == "dark");
            wallpaper_->show();
            wallpaper_->lower();
        } else if (word == "menu") {
            hasProgramMenu_ = rest == "on";
        } else if (word == "state") {
            tellState();
        } else {
            say("unknown: " + word);
        }
    }

    void setPhase(const QString& name) {
        if (name == "recording") {
            status_.phase.set(Recording{});
        } else if (name == "processing") {
            status_.phase.set(Processing{});
        } else if (name == "done") {
            status_.phase.set(Done{});
        } else {
            status_.phase.set(Idle{});
        }
        status_.refreshPill();
    }

    void tellState() {
        const auto* const view = panel_.findChild<PillView*>();
        const QRectF capsule = view->capsule().translated(panel_.pos());
        int menus = 0;
        QPoint menuPlace;
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMenu*>(window) != nullptr && window->isVisible()) {
                ++menus;
                // Of the one that was opened last.
                menuPlace = menus == 1 || window->parentWidget() != nullptr ? window->pos() : menuPlace;
            }
        }
        const QJsonObject state{{"menus", menus},
                                {"menuX", menuPlace.x()},
                                {"menuY", menuPlace.y()},
                                {"visible", panel_.isVisible()},
                                {"window", static_cast<qint64>(panel_.winId())},
                                {"x", panel_.x()},
                                {"y", panel_.y()},
                                {"scale", panel_.devicePixelRatio()},
                                {"capsuleX", capsule.x()},
                                {"capsuleY", capsule.y()},
                                {"capsuleWidth", capsule.width()},
                                {"capsuleHeight", capsule.height()},
                                {"moving", view->motion().isRunning()},
                                {"resizing", view->motion().isResizing()},
                                {"composited", surface_.isComposited()},
                                {"active", panel_.isActiveWindow()}};
        say(QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Compact)));
    }

    QtClock clock_;
    MemoryPreferenceStore store_;
    Preferences preferences_{store_};
    Localisation words_ = shippedWords();
    DiagnosticLog log_{clock_, std::nullopt, [](const QString& line) { say("log: " + line); }};
    Foundation foundation_{clock_, preferences_, words_, log_};
    X11Connection connection_{log_};
    X11PillDesktop desktop_{connection_};
    X11PillSurface surface_{connection_};
    FakeDesktopComfort comfort_;
    FakeAccessibility accessibility_;
    FakeWindows windows_;
    double level_ = 0;
    bool hasProgramMenu_ = false;
    QByteArray pending_;
    std::unique_ptr<Wallpaper> wallpaper_;
    std::vector<Handle> watches_;
    QSocketNotifier input_;
    PillPanel panel_{clock_, desktop_, surface_};
    ScreenPresence screen_{clock_, panel_, windows_};
    DictationStatus status_{clock_, screen_, accessibility_};
};

} // namespace

} // namespace lorvane

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    qputenv("QT_QPA_PLATFORMTHEME", "generic");
    QApplication::setStyle(QStringLiteral("Fusion"));
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const bool isBare = QApplication::arguments().contains(QStringLiteral("--bare"));
    const auto stage = isBare ? nullptr : std::make_unique<lorvane::Stage>();
    return QApplication::exec();
}
