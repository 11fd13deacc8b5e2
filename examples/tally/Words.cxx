#include "Words.h"

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) >= 128;
}

void lowerCase(qnStr& word) {
    for (unsigned i = 0; i < word.length(); ++i) {
        if (word.data[i] >= 'A' && word.data[i] <= 'Z') word.data[i] = static_cast<char>(word.data[i] - 'A' + 'a');
    }
}

}  // namespace

void Words::take(const char* text, std::size_t length) {
    std::size_t i = 0;
    while (i < length) {
        std::size_t start = i;
        while (i < length && isLetter(text[i])) ++i;
        if (i > start) word_.append(text + start, static_cast<unsigned>(i - start));
        if (i == length) return;
        end();
        while (i < length && !isLetter(text[i])) ++i;
    }
}

void Words::end() {
    if (word_.length() == 0) return;
    lowerCase(word_);
    if (isWanted()) counts_.add(word_);
    word_.resize(0);
}

bool Words::isWanted() const { return only_ == nullptr || only_->findBuffer(word_.text(), word_.length()) >= 0; }
