// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/FakeEditor.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace lorvane {

FakeEditor::FakeEditor(Clock& clock, FakeFieldAccess& fields, ProcessId process, const QString& identity)
    : clock_(clock), fields_(fields), identity_(identity) {
    fields_.focus(process, identity);
    field().multiLine = true;
}

void FakeEditor::setText(const QString& text, qint64 caret) {
    field().text = text;
    field().caret = caret;
}

void FakeEditor::insertAt(std::optional<qint64> at, const QString& text) {
    send([this, at, text] { put(at, corrects ? corrects(text) : text, caretLag); });
}

void FakeEditor::paste(const QString& text) {
    send([this, text] { put({}, text, 0); });
}

void FakeEditor::put(std::optional<qint64> at, const QString& text, qint64 behind) {
    const qint64 position = std::min<qint64>(at.value_or(field().caret), field().text->size());
    field().text->insert(position, text);
    field().caret = std::max<qint64>(0, position + text.size() - behind);
}

void FakeEditor::rightArrow() {
    ++rightArrows;
    if (ignoresRightArrow) {
        return;
    }
    send([this] {
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, *field().text);
        finder.setPosition(field().caret);
        const auto next = finder.toNextBoundary();
        field().caret = next < 0 ? field().caret : next;
    });
}

void FakeEditor::backspace() {
    ++backspaces;
    if (ignoresBackspace) {
        return;
    }
    send([this] {
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, *field().text);
        finder.setPosition(field().caret);
        const auto before = finder.toPreviousBoundary();
        if (before >= 0) {
            field().text->remove(before, field().caret - before);
            field().caret = before;
        }
    });
}

void FakeEditor::send(const std::function<void()>& effect) {
    const auto take = [this, effect] {
        if (field().text) { // else it hangs
            effect();
        }
    };
    lastEffect_ = std::max(lastEffect_, clock_.now() + lag);
    if (lastEffect_ == clock_.now()) {
        take();
    } else {
        sent_.push_back(clock_.after(lastEffect_ - clock_.now(), take));
    }
}

QCoro::Task<bool> FakeFragmentPoster::canPost(PostingTarget, TaskScope) { co_return offered; }

QCoro::Task<PostOutcome> FakeFragmentPoster::post(PostingTarget target, QString text, TaskScope) {
    ++asked;
    if (beforePost) {
        beforePost();
    }
    if (outcome == PostOutcome::refused) {
        co_return outcome;
    }
    posts.push_back(text);
    if (!hasNoEffect) {
        editor_.insertAt(lineBreaks ? std::optional(target.caret) : std::nullopt, text);
    }
    co_return outcome;
}

void FakeEditingKeys::press(EditingKey key) {
    if (beforePress) {
        beforePress();
    }
    if (key == EditingKey::rightArrow) {
        editor_.rightArrow();
    } else {
        editor_.backspace();
    }
}

} // namespace lorvane
