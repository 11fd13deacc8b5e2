#ifndef MORVAQNDS_TESTS_REGEXPRIG_H
#define MORVAQNDS_TESTS_REGEXPRIG_H

#include <cstddef>
#include <cstring>
#include <string>

#include "text/RegexpGenerator.h"
#include "text/RegexpMessages.h"

/** What the regular-expression tests share. */
namespace RegexpRig {

using RegexpGenerator::Expression;

inline Expression compile(const char* pattern) { return Expression(qnregcomp(pattern)); }

/** The message with which a pattern is rejected; a note of its own if it compiles. */
inline std::string rejection(const char* pattern) {
    regexpMessages().clear();
    Expression expression = compile(pattern);
    if (expression) return "(compiled)";
    return regexpMessages().size() == 1 ? regexpMessages()[0] : "(not one message)";
}

/** The first `size` bytes of a program. */
inline std::string program(const Expression& expression, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(expression.get()) + offsetof(regexp, program), size);
}

/** Byte `offset` of a program, to be damaged. */
inline unsigned char& programByte(const Expression& expression, std::size_t offset) {
    return reinterpret_cast<unsigned char*>(expression.get())[offsetof(regexp, program) + offset];
}

/** The bytes of an array of numbers, for programs written out by hand. */
template <std::size_t size>
std::string bytes(const unsigned char (&list)[size]) {
    return std::string(reinterpret_cast<const char*>(list), size);
}

/** What group `n` matched, "(unset)" if it took no part. */
inline std::string group(const Expression& expression, int n = 0) {
    if (!expression->startp[n] || !expression->endp[n]) return "(unset)";
    return std::string(expression->startp[n], expression->endp[n]);
}

/** The match of `pattern` in `text`, "(none)" without one, "(rejected)" if the pattern does not compile. */
inline std::string match(const char* pattern, const char* text) {
    Expression expression = compile(pattern);
    if (!expression) return "(rejected)";
    return qnregexec(expression.get(), text) ? group(expression) : "(none)";
}

}  // namespace RegexpRig

#endif
