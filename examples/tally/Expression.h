#ifndef TALLY_EXPRESSION_H
#define TALLY_EXPRESSION_H

#include <morvaqnds.h>

#include <memory>

/** Regular expressions from the command line. */
namespace expression {

/**
 * The compiled `text`. When it does not compile the result is null and `problem` holds the reason, the expression on a
 * line of its own, and below it a caret at the place where compiling it stopped:
 *
 *     nested *?+
 *         ab**c
 *            ^
 */
std::unique_ptr<qnRegEx> compile(const char* text, qnStr& problem);

}  // namespace expression

#endif
