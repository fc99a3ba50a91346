// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/FieldAccess.h"
#include "platform/linux/atspi/AtspiBus.h"
#include "platform/linux/atspi/PatienceList.h"
#include "platform/linux/atspi/TextLedger.h"
#include "platform/linux/atspi/TextUnits.h"

namespace lorvane {

/// Reads length, caret and what follows the caret of one field, in UTF-16 units whatever its application
/// counts.
///
/// The cost does not grow with the field where it can be helped: length and caret are numbers that the
/// application gives, and of the text after the caret only as much is fetched as tells whether it is blank.
/// An application that counts code points (GTK, Chromium) has its field fetched whole once, for the number of
/// its surrogate pairs, which is then carried on by its change events (TextLedger). Main thread.
class FieldReader {
 public:
    FieldReader(AtspiBus& bus, Clock& clock, PatienceList& patience);

    /// Absent when the field is no text that can be edited, is a password, or did not answer before
    /// `deadline`.
    QCoro::Task<std::optional<FieldReading>> read(AccessibleRef field, Instant deadline, TaskScope scope);

    /// A place in a field as its application counts.
    struct Place {
        qint64 position = 0;
        /// The characters of the field when it was read last.
        qint64 count = 0;
        TextUnit unit = TextUnit::codePoints;
    };
    /// The place of a caret that is given in UTF-16 units. Costs nothing where the last reading of that field
    /// had its caret there; otherwise the field is read again.
    QCoro::Task<std::optional<Place>> placeOf(AccessibleRef field, qint64 caret, Instant deadline,
                                              TaskScope scope);
    /// So much text was posted at that place: where the next reading will probably find the caret.
    void expectBehind(const AccessibleRef& field, Place place, qint64 caret, const QString& text);
    /// Sends the questions of a reading already, of a field that was read before: for a reading that follows
    /// another question to the same application at once, in one round trip with it.
    void askAhead(const AccessibleRef& field, Duration bound);
    /// That other question was answered: a reading from now on is to be asked anew.
    void endAhead();
    /// Of an application whose field was read; empty otherwise.
    [[nodiscard]] QString toolkitName(const QString& bus) const { return toolkits_.value(bus); }
    /// How often a field's text was fetched whole or up to its caret.
    [[nodiscard]] int fetches() const { return fetches_; }

 private:
    struct Numbers {
        qint64 count = 0;
        qint64 caret = 0;
        bool multiLine = false;
    };
    /// The questions of one reading, sent together.
    struct Questions {
        AccessibleRef field;
        Completion<AtspiReply> states;
        Completion<AtspiReply> role;
        Completion<AtspiReply> count;
        Completion<AtspiReply> caret;
        Completion<AtspiReply> selections;
        /// What is behind the caret if it stands where it is expected.
        std::optional<Completion<AtspiReply>> after;
        Place expected;
    };
    /// Where the caret stood at the last reading, or has to stand after what was posted, in both units.
    struct Seen {
        AccessibleRef field;
        qint64 caret = 0;
        Place place;
    };
    [[nodiscard]] Questions ask(const AccessibleRef& field, Duration bound);
    [[nodiscard]] Questions takeAhead(const AccessibleRef& field, Duration bound);
    QCoro::Task<std::optional<Numbers>> readNumbers(Questions asked, Instant deadline, TaskScope scope);
    QCoro::Task<std::optional<qint64>> selectionStart(AccessibleRef field, Instant deadline, TaskScope scope);
    QCoro::Task<std::optional<QString>> readText(AccessibleRef field, qint64 from, qint64 to,
                                                 Instant deadline, TaskScope scope);
    /// Everything before `to`: the costly reading of a large field.
    QCoro::Task<std::optional<QString>> fetchBefore(AccessibleRef field, qint64 to, Instant deadline,
                                                    TaskScope scope);
    QCoro::Task<std::optional<QString>> readAfter(Questions asked, Numbers numbers, Instant deadline,
                                                  TaskScope scope);
    QCoro::Task<std::optional<QString>> toolkitOf(QString bus, Instant deadline, TaskScope scope);
    QCoro::Task<std::optional<qint64>> pairsIn(AccessibleRef field, qint64 count, Instant deadline,
                                               TaskScope scope);
    QCoro::Task<std::optional<FieldReading>> inCodePoints(AccessibleRef field, Numbers numbers, QString after,
                                                          Instant deadline, TaskScope scope);
    /// Takes out what the toolkit adds to a text.
    QCoro::Task<std::optional<FieldReading>> withoutAdditions(AccessibleRef field, Numbers numbers,
                                                              FieldReading reading, Instant deadline,
                                                              TaskScope scope);
    [[nodiscard]] Duration left(Instant deadline) const;
    [[nodiscard]] TextUnit assumedUnit(const QString& bus) const;
    void note(const AccessibleRef& field, const AtspiReply& reply);
    void watch(const AccessibleRef& field);
    void unwatch();
    void enterChange(const TextChange& change);

    AtspiBus& bus_;
    Clock& clock_;
    PatienceList& patience_;
    QHash<QString, QString> toolkits_;
    QHash<QString, TextUnit> units_;
    std::optional<Seen> seen_;
    std::optional<Questions> ahead_;
    Instant aheadEnd_ = Instant::max();
    int fetches_ = 0;
    AccessibleRef watched_;
    TextLedger ledger_;
    Handle textWatch_;
    Handle watchEnd_;
};

} // namespace lorvane
