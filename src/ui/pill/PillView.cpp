// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillView.h"

#include "base/PreferenceCatalogue.h"
#include "ui/pill/PillGeometry.h"
#include "ui/pill/PillMenus.h"
#include "ui/pill/QuietMenu.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QCursor>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>

namespace lorvane {

namespace {

using pillLayout::Content;

constexpr double chipWidth = 38;
constexpr double microphoneWidth = 30;
constexpr double microphoneSize = 14;
constexpr double globeSize = 10.5;
constexpr double crossSize = 8;
/// Beyond the capsule, as far as its shadow goes.
constexpr int shadowReach = 9;

} // namespace

PillView::PillView(const Foundation& foundation, World world)
    : foundation_(foundation), world_(std::move(world)),
      colours_(PillColours::of(world_.comfort.wantsMoreContrast())),
      motion_(foundation.clock, {world_.commands.level, [this] { redraw(); }}), language_(this, colours_),
      microphone_(this, colours_), translation_(this, colours_), cancel_(this, colours_) {
    setFixedSize(pillGeometry::panelWidth, pillGeometry::panelHeight);
    motion_.setCalm(world_.comfort.wantsLessMotion());
    microphone_.setSymbol(PillIcon::microphone, microphoneSize);
    cancel_.setSymbol(PillIcon::cross, crossSize);
    connectControls();
    watchWorld();
    placeControls();
    refreshControls();
    refresh();
}

PillView::~PillView() = default;

void PillView::connectControls() {
    for (PillButton* const button : {&language_, &microphone_, &translation_, &cancel_}) {
        button->onTip = [this, button] { showTip(button); };
        button->onLeft = [this] { showTip(nullptr); };
        connect(button, &QAbstractButton::pressed, this, [this] { showTip(nullptr); });
    }
    connect(&microphone_, &QAbstractButton::clicked, this, [this] { tap(); });
    connect(&cancel_, &QAbstractButton::clicked, this, [this] { world_.commands.cancelProcessing(); });
    connect(&language_, &QAbstractButton::clicked, this, [this] {
        Preferences& preferences = foundation_.preferences;
        const auto rows = pillContent::speechMenu(preferences.get(preference::speakLang), foundation_.words);
        openMenu(pillMenus::choices(
                     pillContent::speechTip(foundation_.words), rows,
                     [&preferences](const QString& code) { preferences.set(preference::speakLang, code); }),
                 above(language_));
    });
    connect(&translation_, &QAbstractButton::clicked, this, [this] {
        Preferences& preferences = foundation_.preferences;
        const auto rows = pillContent::translationMenu(preferences.get(preference::translateLang),
                                                       world_.languages, foundation_.words);
        openMenu(pillMenus::titledChoices(pillContent::translationTitle(foundation_.words), rows,
                                          [&preferences](const QString& code) {
                                              preferences.set(preference::translateLang, code);
                                          }),
                 above(translation_));
    });
}

QPainterPath PillView::outline() const {
    QPainterPath path = capsulePath(capsule());
    if (tipped_ != nullptr) {
        path.addPath(tipPath(tipArea()));
    }
    return path;
}

void PillView::showTip(const PillButton* about) {
    if (tipped_ != about) {
        tipped_ = about;
        touch();
        if (onShape) {
            onShape();
        }
    }
}

QRectF PillView::tipArea() const {
    return PillPainter::tipArea(tipped_->toolTip(), QRectF(tipped_->geometry()).center().x(), capsule(),
                                *this);
}

void PillView::watchWorld() {
    Preferences& preferences = foundation_.preferences;
    watches_.push_back(world_.status.phase.subscribe([this](const Phase&) { refresh(); }));
    watches_.push_back(world_.status.isTranslating.subscribe([this](const bool&) { refresh(); }));
    watches_.push_back(preferences.subscribe(preference::speakLang, [this] { refreshControls(); }));
    watches_.push_back(preferences.subscribe(preference::translateLang, [this] { refreshControls(); }));
    watches_.push_back(preferences.subscribe(preference::hotkey, [this] { refreshControls(); }));
    watches_.push_back(world_.comfort.onChange([this] {
        colours_ = PillColours::of(world_.comfort.wantsMoreContrast());
        motion_.setCalm(world_.comfort.wantsLessMotion());
        touch();
    }));
}

void PillView::setComposited(bool composited) {
    if (isComposited_ != composited) {
        isComposited_ = composited;
        touch();
    }
}

void PillView::setShown(bool shown) {
    if (!shown) {
        setHovering(false);
    }
    motion_.setShown(shown);
    redraw();
}

void PillView::recheckPointer() {
    if (hovering_ && !hasMenu_ && !isPointed()) {
        setHovering(false);
    }
}

bool PillView::isPointed() const { return pillLayout::hitArea().contains(mapFromGlobal(QCursor::pos())); }

void PillView::setHovering(bool hovering) {
    if (hovering_ == hovering) {
        return;
    }
    hovering_ = hovering;
    pointerWatch_.reset();
    if (hovering) {
        refreshControls(); // the hold key may be another by now
        pointerWatch_ = foundation_.clock.every(seconds(1), [this] { recheckPointer(); });
    }
    refresh();
}

QString PillView::label() const {
    const Phase& phase = world_.status.phase.get();
    if (const auto* const notice = std::get_if<Notice>(&phase)) {
        return notice->text;
    }
    return isIn<Done>(phase)
               ? foundation_.words.text("Inserted")
               : pillContent::progressLabel(world_.status.isTranslating.get(), foundation_.words);
}

void PillView::refresh() {
    const Phase& phase = world_.status.phase.get();
    content_ = pillLayout::contentOf(phase, hovering_);
    const QFontMetricsF metrics(pillTextFont(*this));
    motion_.show(content_, pillLayout::sizeOf(content_, metrics.horizontalAdvance(label())));
    const bool hasControls = content_ == Content::controls;
    for (PillButton* const button : {&language_, &microphone_, &translation_}) {
        button->setVisible(hasControls);
    }
    cancel_.setVisible(content_ == Content::progress);
    showTip(nullptr);
    announce();
}

void PillView::refreshControls() {
    const Localisation& words = foundation_.words;
    const QString speech = foundation_.preferences.get(preference::speakLang);
    const QString target = foundation_.preferences.get(preference::translateLang);
    language_.setLetters(pillContent::speechLabel(speech));
    language_.describe(pillContent::speechTip(words), pillContent::speechLabel(speech));
    microphone_.describe(pillContent::microphoneTip(world_.commands.hotkey(), words), {});
    if (target.isEmpty()) {
        translation_.setSymbol(PillIcon::globe, globeSize);
    } else {
        translation_.setLetters(pillContent::translationLabel(target));
    }
    translation_.describe(pillContent::translationTip(target, world_.languages, words),
                          pillContent::translationLabel(target));
    cancel_.describe(words.text("Cancel"), {});
}

// They stand where the capsule will be, and come up with it.
void PillView::placeControls() {
    const QRectF open = pillLayout::capsule(pillLayout::sizeOf(Content::controls, 0));
    double x = open.center().x() - (2 * chipWidth + microphoneWidth) * 0.5;
    for (PillButton* const button : {&language_, &microphone_, &translation_}) {
        const double width = button == &microphone_ ? microphoneWidth : chipWidth;
        button->setGeometry(QRectF(x, open.top(), width, open.height()).toRect());
        x += width;
    }
    const QRectF progress = pillLayout::capsule(pillLayout::sizeOf(Content::progress, 0));
    cancel_.setGeometry(PillPainter::cancelArea(progress).toRect());
}

void PillView::announce() {
    const QString told = pillContent::announcement(world_.status.phase.get(),
                                                   world_.status.isTranslating.get(), foundation_.words);
    if (told == accessibleName()) {
        return;
    }
    setAccessibleName(told); // tells the change of the name
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

void PillView::redraw() {
    const QRectF now = capsule();
    for (PillButton* const button : {&language_, &microphone_, &translation_, &cancel_}) {
        if (!button->isHidden()) {
            button->setAppearance(motion_.appearance());
        }
    }
    if (now == drawn_) {
        touch(now.toAlignedRect());
        return;
    }
    touch(now.united(drawn_).toAlignedRect().adjusted(-shadowReach, -shadowReach, shadowReach, shadowReach));
    drawn_ = now;
    if (onShape) {
        onShape();
    }
}

void PillView::touch() { touch(rect()); }

void PillView::touch(const QRect& area) {
    update(area);
    if (onRedraw) {
        onRedraw();
    }
}

PillPicture PillView::picture() const {
    PillPicture picture;
    picture.content = content_;
    picture.capsule = capsule();
    picture.text = label();
    if (const auto* const notice = std::get_if<Notice>(&world_.status.phase.get())) {
        picture.severity = notice->severity;
    }
    picture.appearance = motion_.appearance();
    picture.pop = motion_.pop();
    picture.turn = motion_.turn();
    picture.bars = motion_.bars();
    picture.isComposited = isComposited_;
    if (tipped_ != nullptr) {
        picture.tipArea = tipArea();
        picture.tip = tipped_->toolTip();
    }
    return picture;
}

void PillView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PillPainter(painter, colours_).draw(picture());
}

void PillView::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    setHovering(true);
}

void PillView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    if (!hasMenu_) {
        setHovering(false);
    }
    showTip(nullptr);
}

void PillView::mousePressEvent(QMouseEvent* event) {
    isPressed_ = event->button() == Qt::LeftButton && pillLayout::hitArea().contains(event->pos());
}

void PillView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isPressed_ && pillLayout::hitArea().contains(event->pos())) {
        tap();
    }
    isPressed_ = isPressed_ && event->button() != Qt::LeftButton;
}

void PillView::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    const PillCommands& commands = world_.commands;
    openMenu(
        pillMenus::context({commands.hideForAnHour, commands.quit, commands.extendMenu}, foundation_.words),
        mapToGlobal(QPointF(event->pos().x(), capsule().top())).toPoint());
}

void PillView::tap() {
    switch (pillLayout::tapIn(world_.status.phase.get())) {
    case pillLayout::Tap::start:
        return world_.commands.startDictation();
    case pillLayout::Tap::stop:
        return world_.commands.stopDictation();
    case pillLayout::Tap::nothing:
        return;
    }
}

QPoint PillView::above(const QWidget& control) const {
    return control.mapToGlobal(QPoint(control.width() / 2, 0));
}

void PillView::openMenu(std::unique_ptr<QMenu> menu, const QPoint& where) {
    showTip(nullptr);
    hasMenu_ = true;
    quietMenu::prepare(*menu, isComposited_);
    quietMenu::open(menu.release(), where, [this] {
        hasMenu_ = false;
        setHovering(isPointed());
    });
}

} // namespace lorvane
