// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

#include <random>

namespace lorvane {

namespace {

const QString mine = QStringLiteral("My own text 😀 é. ");

/// A take into a field that misbehaves as chance has it. The user's own text stands before the caret and, as
/// blanks, behind it.
class RandomTake {
 public:
    explicit RandomTake(unsigned seed) : random_(seed) {
        blanks_ = QString(pick(20), '\n');
        w.showField(mine + blanks_, mine.size());
        text_ = words(1 + pick(12));
        FakeDictation stream;
        for (const QString& delta : deltas(chance(5) ? words(1 + pick(6)) : text_.left(cutOf(text_)))) {
            stream.deltas.push_back(arrived(delta));
        }
        stream.outcome.complete(FakeDictationEndpoints::text(text_));
        w.backend.streams.push_back(stream);
        w.insertionWay.offered = chance(2);
        w.insertionWay.hasNoEffect = chance(5);
        w.fields.field("body").multiLine = chance(2);
        w.keysWay.beforePost = [this] { misbehave(); };
        w.insertionWay.beforePost = [this] {
            misbehave();
            if (w.insertionWay.outcome == PostOutcome::posted) {
                w.field.lag = Duration::zero(); // it answers when it is done
            }
        };
        w.editingKeys.beforePress = [this] {
            w.field.lag = std::min<Duration>(w.field.lag, std::chrono::milliseconds(190));
            if (chance(40)) {
                w.fields.focus(DictationWorld::editor, "another");
            }
        };
        w.field.corrects = [this](const QString& text) { return corrected(text); };
    }

    void run() {
        w.start();
        w.holdFor(1);
        if (chance(8)) {
            w.advance(0.01 * pick(30));
            w.escape();
            cancelled_ = true;
        }
        for (int i = 0; i < 400 && w.isProcessing(); ++i) {
            w.advance(0.05);
        }
        w.advance(10);
    }

    void check() {
        const QString field = w.fields.field("body").text.value_or(hung_);
        SCOPED_TRACE(w.world.lines.join("\n").toStdString() + "\ntext: " + text_.toStdString());
        EXPECT_TRUE(field.startsWith(mine)) << field.toStdString();
        EXPECT_GE(field.count('\n'), blanks_.size()) << field.toStdString();
        EXPECT_FALSE(w.isProcessing());
        const bool handedOver = w.pasteboard.text() == text_;
        const bool pastedWhole = w.pasted.contains(text_);
        if (cancelled_ || handedOver || pastedWhole) {
            return;
        }
        EXPECT_EQ(w.notice(), "");
        // Right arrows that take effect late may leave some of the user's blank lines before the last words.
        EXPECT_EQ(withoutLines(field.mid(mine.size())), withoutLines(text_)) << field.toStdString();
        EXPECT_EQ(field.count('\n'), text_.count('\n') + blanks_.size()) << field.toStdString();
    }

 private:
    /// Nor the brackets that the application adds by itself.
    static QString withoutLines(const QString& text) {
        return QString(text).remove('\n').remove(')').trimmed();
    }
    int pick(int below) { return std::uniform_int_distribution(0, below - 1)(random_); }
    bool chance(int oneOf) { return pick(oneOf) == 0; }

    QString words(int count) {
        static const QStringList all{
            "one",     "straße",     "дом",  "Ελλάδα",    "漢字", "かな",  "😀😀", "👩‍👩‍👧‍👦",
            "e\u0301", "two\nthree", "a\tb", "\"quote\"", "(c)",  "naïve", "–",  "wörd"};
        QStringList chosen;
        for (int i = 0; i < count; ++i) {
            chosen.append(all[pick(static_cast<int>(all.size()))]);
        }
        return chosen.join(' ');
    }
    qsizetype cutOf(const QString& text) {
        if (chance(2)) {
            return text.size();
        }
        const qsizetype cut = pick(static_cast<int>(text.size()) + 1);
        return cut > 0 && cut < text.size() && text[cut].isLowSurrogate() ? cut - 1 : cut;
    }
    QStringList deltas(const QString& text) {
        QStringList pieces;
        for (qsizetype at = 0; at < text.size();) {
            qsizetype size = 1 + pick(30);
            if (at + size < text.size() && text[at + size].isLowSurrogate()) {
                ++size;
            }
            pieces.append(text.mid(at, size));
            at += size;
        }
        if (chance(4)) {
            pieces.append(" ");
        }
        return pieces;
    }
    void misbehave() {
        w.field.lag = std::chrono::milliseconds(chance(6) ? pick(400) : pick(60));
        w.field.caretLag = chance(10) ? pick(4) - 1 : 0;
        if (w.field.caretLag < 0) { // it is ahead
            w.field.lag = Duration::zero();
        }
        w.field.ignoresBackspace = chance(10);
        w.field.ignoresRightArrow = chance(10);
        w.editingKeys.held = chance(30) ? modifierFlag::control : 0;
        w.fields.secure = chance(30);
        if (chance(30)) {
            w.workspace.front->processId = 7;
        }
        if (chance(30)) {
            w.fields.focus(DictationWorld::editor, "another");
        }
        if (chance(30)) {
            hung_ = w.field.text();
            w.fields.field("body").text.reset();
        }
        if (chance(20)) {
            w.insertionWay.outcome = chance(2) ? PostOutcome::unknown : PostOutcome::refused;
        }
    }
    /// What the application makes of what is typed.
    QString corrected(const QString& text) {
        if (chance(15)) {
            return text.left(pick(static_cast<int>(text.size())));
        }
        if (chance(15)) {
            return text + ")";
        }
        return text;
    }
    std::mt19937 random_;
    DictationWorld w;
    QString blanks_;
    QString text_;
    QString hung_;
    bool cancelled_ = false;
};

TEST(LiveTypingRandom, EveryTakeLandsOrIsPastedOrIsHandedOverAndTheUsersTextStays) {
    for (unsigned seed = 0; seed < 1000 && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomTake take(seed);
        take.run();
        take.check();
    }
}

} // namespace

} // namespace lorvane
