#ifndef TALLY_COMPLAIN_H
#define TALLY_COMPLAIN_H

/** Exit statuses. */
enum : int {
    Failure = 1,    ///< an input, the state or the output
    UsageError = 2  ///< the command line
};

/** Says one line on standard error, behind what was printed so far, and returns `status`. */
int complain(const char* problem, int status = Failure);
int complain(const char* subject, const char* problem, int status = Failure);

#endif
