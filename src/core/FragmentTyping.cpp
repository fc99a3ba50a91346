// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/FragmentTyping.h"

#include "core/TypingDecisions.h"

namespace lorvane {

namespace {

QString keyOf(const RunningApplication& application) {
    return application.bundleIdentifier.isEmpty() ? QString::number(application.processId)
                                                  : application.bundleIdentifier;
}

bool takesLineBreaks(const TypingAttempt& attempt) {
    return attempt.multiLine && attempt.ways->front()->takesLineBreaks();
}

} // namespace

QCoro::Task<TypedFragment> FragmentTyping::typeFragment(std::shared_ptr<TypingAttempt> attempt, qint64 base,
                                                        QString text, Check check, TaskScope scope) {
    TypedFragment typed;
    typed.isComplete = text.isEmpty();
    co_await findWays(attempt, scope);
    typed.hasNoWay = !attempt->ways || attempt->ways->empty();
    while (!typed.hasNoWay && typed.units < text.size()) {
        if (attempt->ways->empty()) {
            co_return typed;
        }
        const qsizetype cut = nextCut(text, typed.units, takesLineBreaks(*attempt));
        typed.endsAtBreak = cut == 0;
        if (cut == 0) {
            co_return typed;
        }
        const TypedFragment posted = co_await postCut(attempt, base + typed.units, text.mid(typed.units, cut),
                                                      typed.units, check, scope);
        typed.units += posted.units;
        typed.endsAtBreak = posted.endsAtBreak;
        if (!posted.isComplete && (posted.units > 0 || posted.endsAtBreak)) {
            co_return typed;
        }
        if (!posted.isComplete) {
            // While that way was tried, the user may have gone elsewhere, or its text may have come after
            // all.
            const Arrival aimed = co_await check(Post{typed.units, 0, false});
            if (aimed != Arrival::arrived) {
                typed.isOffTarget = true;
                co_return typed;
            }
        }
        typed.isComplete = typed.units == text.size();
    }
    co_return typed;
}

/// Not complete and without units: this way is given up, and the next one may take it.
QCoro::Task<TypedFragment> FragmentTyping::postCut(std::shared_ptr<TypingAttempt> attempt, qint64 at,
                                                   QString cut, qsizetype before, Check check,
                                                   TaskScope scope) {
    FragmentPoster* const way = attempt->ways->front();
    if (!attempt->typingElement) {
        attempt->ways->clear(); // taken back meanwhile
        co_return TypedFragment();
    }
    const PostingTarget target{attempt->application, *attempt->typingElement, at};
    const PostOutcome outcome = co_await way->post(target, cut, scope);
    if (outcome == PostOutcome::refused) {
        // A way that has worked before refuses these characters only.
        const bool onlyThese = attempt->ways->size() == 1 && isProven(*attempt, way);
        if (!onlyThese) {
            giveUp(*attempt, Doubt::refused);
        }
        TypedFragment nothing;
        nothing.endsAtBreak = onlyThese;
        co_return nothing;
    }
    Post post;
    post.isAnswered = outcome == PostOutcome::posted && way->tellsWhenDone();
    post.count = before + cut.size();
    post.units = cut.size();
    post.isTrial = outcome == PostOutcome::posted && attempt->ways->size() > 1 && !isProven(*attempt, way);
    const Arrival arrival = co_await check(post);
    if (arrival == Arrival::noEffect) {
        giveUp(*attempt, Doubt::noEffect);
        co_return TypedFragment();
    }
    if (arrival == Arrival::arrived && proven_.insert({keyOf(attempt->application), way}).second) {
        log_.diagLog(QStringLiteral("[tirra-type] %1 takes text by %2")
                         .arg(attempt->application.localizedName, way->name()));
    }
    TypedFragment typed;
    typed.isComplete = arrival == Arrival::arrived;
    typed.units = cut.size();
    co_return typed;
}

QCoro::Task<void> FragmentTyping::findWays(std::shared_ptr<TypingAttempt> attempt, TaskScope scope) {
    if (attempt->ways || !attempt->typingElement) {
        co_return;
    }
    std::vector<FragmentPoster*> ways;
    const PostingTarget target{attempt->application, *attempt->typingElement,
                               attempt->typedStart.value_or(0)};
    for (FragmentPoster* const poster : posters_) {
        if (givenUp_.contains({keyOf(attempt->application), poster})) {
            continue;
        }
        const bool offered = co_await poster->canPost(target, scope);
        if (offered) {
            ways.push_back(poster);
        }
    }
    attempt->ways = std::move(ways);
}

/// A refusal proves nothing: the next take asks that way again.
void FragmentTyping::giveUp(TypingAttempt& attempt, Doubt doubt) {
    const FragmentPoster* const way = attempt.ways->front();
    const std::pair<Application, const FragmentPoster*> both{keyOf(attempt.application), way};
    if (doubt == Doubt::noEffect && !isProven(attempt, way)) {
        givenUp_.insert(both);
    }
    if (said_.insert({both, doubt}).second) {
        log_.diagLog(QStringLiteral("[tirra-type] %1 %2 %3")
                         .arg(attempt.application.localizedName,
                              doubt == Doubt::refused ? QStringLiteral("does not take text by")
                                                      : QStringLiteral("says yes and shows no text by"),
                              way->name()));
    }
    attempt.ways->erase(attempt.ways->begin());
}

bool FragmentTyping::isProven(const TypingAttempt& attempt, const FragmentPoster* way) const {
    return proven_.contains({keyOf(attempt.application), way});
}

void FragmentTyping::finish() {
    for (FragmentPoster* const poster : posters_) {
        poster->finish();
    }
}

} // namespace lorvane
