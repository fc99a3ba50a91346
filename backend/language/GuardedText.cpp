// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/GuardedText.h"

namespace lorvane::backend {

namespace {

constexpr std::string_view blanks = " \t\n";
constexpr std::size_t smallestPiece = 16; // bytes; looking at less costs more than it gains
constexpr std::size_t longestWord = 240;  // bytes; more is a script without blanks

bool isControl(char c) { return (c >= 0 && c < ' ' && c != '\n' && c != '\t') || c == 0x7f; }

// How much of it is whole words; a blank belongs to the word after it.
std::size_t wholeWords(std::string_view text) {
    const auto blank = text.find_last_of(blanks);
    const auto before =
        blank == std::string_view::npos ? std::string_view::npos : text.find_last_not_of(blanks, blank);
    if (before != std::string_view::npos)
        return before + 1;
    if (text.size() <= longestWord)
        return 0;
    auto end = text.size() - longestWord / 2;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return end;
}

} // namespace

GuardedText::GuardedText(std::string_view given, FaithGuard::Bounds bounds, std::string_view marker,
                         const OnFragment& onFragment)
    : given_(given), bounds_(bounds), marker_(marker), onFragment_(onFragment) {
    begin();
}

void GuardedText::begin() {
    guard_.emplace(given_, bounds_);
    text_.clear();
    pending_.clear();
}

bool GuardedText::hear(std::string_view text) {
    for (const char c : text)
        if (!isControl(c) && !(text_.empty() && pending_.empty() && blanks.find(c) != std::string_view::npos))
            pending_ += c;
    if (pending_.size() < smallestPiece)
        return true;
    const auto whole = wholeWords(pending_);
    if (whole == 0)
        return true;
    const auto piece = pending_.substr(0, whole);
    pending_.erase(0, whole);
    return check(piece) && (!guard_->plausible() || show());
}

bool GuardedText::finish() {
    pending_.erase(pending_.find_last_not_of(blanks) + 1);
    return check(pending_) && guard_->complete() && show();
}

bool GuardedText::check(std::string_view piece) {
    text_ += piece;
    guard_->add(piece);
    return !guard_->implausible() && piece.find(marker_) == std::string_view::npos &&
           !text_.starts_with("```");
}

// Who does not take it any more has the whole of it in the end, if that is wanted.
bool GuardedText::show() {
    const auto from = shown_;
    shown_ = text_.size();
    return from == shown_ || onFragment_(text_.substr(from));
}

} // namespace lorvane::backend
