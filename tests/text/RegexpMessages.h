#ifndef MORVAQNDS_TESTS_REGEXPMESSAGES_H
#define MORVAQNDS_TESTS_REGEXPMESSAGES_H

#include <string>
#include <vector>

#include "RegExp.h"

/** What the regular-expression functions have reported since the list was last cleared. */
inline std::vector<std::string>& regexpMessages() {
    static std::vector<std::string> messages;
    return messages;
}

/** The test program's own error hook, which takes the place of the library's silent one. */
__attribute__((used)) inline void qnregerror(const char* message) { regexpMessages().push_back(message); }

#endif
