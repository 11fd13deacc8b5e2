#include "Expression.h"

namespace {

const char* reason = "";

/** Whether a byte is the second or a later one of a character in UTF-8, which takes no column of its own. */
bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

// The library tells nobody why an expression does not compile, but for a program that defines this function.
void qnregerror(const char* message) { reason = message; }

std::unique_ptr<qnRegEx> expression::compile(const char* text, qnStr& problem) {
    std::unique_ptr<qnRegEx> compiled(new qnRegEx(text));
    long place = qnregerrorplace();
    if (place < 0) return compiled;
    problem = qnStr(reason) + "\n    ";
    for (const char* c = text; *c != 0; ++c) problem.append(static_cast<unsigned char>(*c) < ' ' ? ' ' : *c);
    problem.append("\n    ");
    for (long i = 0; i < place; ++i) {
        if (!continues(text[i])) problem.append(' ');
    }
    problem.append('^');
    return nullptr;
}
