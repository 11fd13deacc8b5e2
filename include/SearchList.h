#ifndef MORVAQNDS_SEARCHLIST_H
#define MORVAQNDS_SEARCHLIST_H

#include "StrArray.h"

/**
 * The files, in a list of directories, whose names match a regular expression: an array of their full names.
 *
 *     qnSearchList fonts("/usr/share/fonts:/home/ada/fonts", "[a-z]+\\.pcf");
 *     for (unsigned i = 0; i < fonts.length(); ++i) load(fonts.elements()[i].text());
 *     fonts.regexp(".*\\.ttf");                         // searches again
 *
 * What is unusual:
 * - Deliberate: a name is selected when the match that the expression finds first covers the whole name. With
 *   alternatives that is the first that matches, so `a|ab` does not select "ab"; write `ab|a`, or `(a|ab)$`.
 * - Deliberate: nothing is sorted and nothing is left out, as the order of the list is a ranking. Names come in the
 *   order of the directories in the list and of the entries in each directory, duplicates and "." and ".." included.
 * - Deliberate: the list is as old as the last search. The values that it has do not search; `recalc` does.
 * - What cannot be read is skipped, and an expression that does not compile selects nothing. Neither is reported.
 *
 * Directories are separated by ":"; empty ones are skipped. A full name is the directory as it stands in the list, a
 * slash, and the name of the entry.
 */
class MORVAQNDS_API qnSearchList : public qnStrArray {
public:
    /** Searches at once, unless `searchList` is empty. Null arguments are empty texts. */
    qnSearchList(const char* searchList, const char* regexp);

    /** Sets the directories and searches again, if they differ from those before. */
    void searchList(const char* searchList);
    /** Sets the expression and searches again, if it differs from the one before. */
    void regexp(const char* regexp);
    /** Sets both and searches again, once, if either differs. */
    void searchCriteria(const char* searchList, const char* regexp);

    /** Empties the array and searches again. */
    void recalc();

private:
    qnStr regexp_;      // what a whole file name must match
    qnStr searchList_;  // directories separated by ":"
};

#endif
