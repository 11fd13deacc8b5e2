#include <cstddef>
#include <cstring>

#include "RegExp.h"
#include "RegProgram.h"

namespace {

// Which group the text at `source` stands for: 0 to 9, or -1 if it is no reference. Sets how many characters it takes.
int groupAt(const char* source, unsigned& taken) {
    if (*source == '&') {
        taken = 1;
        return 0;
    }
    if (*source == '\\' && source[1] >= '0' && source[1] <= '9') {
        taken = 2;
        return source[1] - '0';
    }
    return -1;
}

// Copies a group of the last match. False when the text that was searched no longer holds it.
bool copyGroup(const regexp& expression, int group, char*& destination) {
    const char* start = expression.startp[group];
    const char* end = expression.endp[group];
    if (!start || !end || start == end) return true;
    if (end < start) return false;
    std::size_t length = static_cast<std::size_t>(end - start);
    std::strncpy(destination, start, length);
    destination += length;
    return destination[-1] != '\0';
}

}  // namespace

void qnregsub(regexp* expression, const char* source, char* destination) {
    if (!expression || !source || !destination) {
        qnregerror("NULL parm to regsub");
        return;
    }
    if (programOf(expression)[0] != programMagic) {
        qnregerror("damaged regexp fed to regsub");
        return;
    }
    while (*source) {
        unsigned taken = 0;
        int group = groupAt(source, taken);
        if (group < 0) {
            if (*source == '\\' && (source[1] == '\\' || source[1] == '&')) ++source;
            *destination++ = *source++;
            continue;
        }
        if (!copyGroup(*expression, group, destination)) {
            qnregerror("damaged match string");
            break;
        }
        source += taken;
    }
    *destination = '\0';
}
