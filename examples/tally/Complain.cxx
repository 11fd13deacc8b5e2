#include "Complain.h"

#include <cstdio>

int complain(const char* problem, int status) {
    std::fflush(stdout);
    std::fprintf(stderr, "tally: %s\n", problem);
    return status;
}

int complain(const char* subject, const char* problem, int status) {
    std::fflush(stdout);
    std::fprintf(stderr, "tally: %s: %s\n", subject, problem);
    return status;
}
