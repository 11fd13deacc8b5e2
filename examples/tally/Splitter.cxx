#include "Splitter.h"

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

Splitter::Splitter() : output_(addOutput("word", qnDT_qnStr)) {
    addInput("line", this, &onLine);
    addInput("end", this, &onEnd);
}

const char* Splitter::className() const { return "Splitter"; }

void Splitter::onLine(Splitter* splitter, const qnStr& line) {
    const char* text = line.text();
    const unsigned length = line.length();
    unsigned i = 0;
    while (i < length) {
        unsigned start = i;
        while (i < length && isLetter(text[i])) ++i;
        if (i > start) splitter->word_.append(text + start, i - start);
        if (i == length) return;
        splitter->sendWord();
        while (i < length && !isLetter(text[i])) ++i;
    }
}

void Splitter::onEnd(Splitter* splitter) {
    splitter->sendWord();
    splitter->ended_ = true;
}

void Splitter::sendWord() {
    if (word_.length() == 0) return;
    lowerCase(word_);
    sendData(output_, new qnStrData(word_), qnSF_Immediate);
    word_.resize(0);
}
