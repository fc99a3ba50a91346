// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "core/TypingAttempt.h"

#include <functional>
#include <set>
#include <utility>
#include <vector>

namespace lorvane {

/// What became of one post.
enum class Arrival {
    arrived,
    failed,   ///< it is not known to stand in the field as it should
    noEffect, ///< the field is exactly as it was: the way said yes and did nothing
};

/// How a fragment was typed.
struct TypedFragment {
    /// All of it was posted and confirmed.
    bool isComplete = false;
    /// What was posted, the post that failed included.
    qsizetype units = 0;
    /// It ended before a character that would be a key there, such as a line feed that sends, or that the
    /// field's way cannot carry.
    bool endsAtBreak = false;
    /// The rest was not posted, since the field or its caret was not where it should be.
    bool isOffTarget = false;
    /// The desktop has no way into the field just now.
    bool hasNoWay = false;
};

/// Posts text into the armed field, at most twelve units at a time, each confirmed before the next. Of the
/// ways there are, the first that the field offers and that shows an effect is used; one that refuses is
/// given up for the take, and one that says yes and does nothing for that application until the program ends.
/// Main thread.
class FragmentTyping {
 public:
    /// One post that has just gone out.
    struct Post {
        /// Units of the fragment posted so far, this post included.
        qsizetype count = 0;
        qsizetype units = 0;
        /// Another way may be tried when this one shows no effect.
        bool isTrial = false;
        /// The application itself said that it is done.
        bool isAnswered = false;
    };
    using Check = std::function<QCoro::Task<Arrival>(Post post)>;

    /// `posters`: best first.
    FragmentTyping(DiagnosticLog& log, std::vector<FragmentPoster*> posters)
        : log_(log), posters_(std::move(posters)) {}

    /// `base`: where the caret stands before the text.
    QCoro::Task<TypedFragment> typeFragment(std::shared_ptr<TypingAttempt> attempt, qint64 base, QString text,
                                            Check check, TaskScope scope);
    /// The typing of a take is over.
    void finish();

 private:
    QCoro::Task<void> findWays(std::shared_ptr<TypingAttempt> attempt, TaskScope scope);
    /// Posts one cut by the first way that takes it.
    QCoro::Task<TypedFragment> postCut(std::shared_ptr<TypingAttempt> attempt, qint64 at, QString cut,
                                       qsizetype before, Check check, TaskScope scope);
    enum class Doubt { refused, noEffect };
    void giveUp(TypingAttempt& attempt, Doubt doubt);
    [[nodiscard]] bool isProven(const TypingAttempt& attempt, const FragmentPoster* way) const;

    using Application = QString;
    DiagnosticLog& log_;
    std::vector<FragmentPoster*> posters_;
    /// By application: ways that were seen to work, and those that said yes to nothing.
    std::set<std::pair<Application, const FragmentPoster*>> proven_;
    std::set<std::pair<Application, const FragmentPoster*>> givenUp_;
    /// What the log has already.
    std::set<std::pair<std::pair<Application, const FragmentPoster*>, Doubt>> said_;
};

} // namespace lorvane
